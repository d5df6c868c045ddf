// Cases kept as data: a line "== EXPECTATION" opens a case, and the bytes up to the next such
// line (without the newline before it) are its input.
#pragma once

#include "platform/platform.h"

#include <string>
#include <vector>

namespace talmo::test {

struct DataCase {
    std::string expect, input;
};

inline std::vector<DataCase> ReadDataCases(const std::string& name)
{
    std::string text;
    std::vector<DataCase> out;
    if (!ReadFileBytes(std::string(TALMO_SOURCE_DIR) + "/tests/platform/data/" + name, text, 1 << 20))
        return out;
    for (size_t at = 0; text.compare(at, 3, "== ") == 0;) {
        const size_t eol = text.find('\n', at);
        const size_t next = std::min(text.find("\n== ", eol), text.size() - 1);
        out.push_back({text.substr(at + 3, eol - at - 3), text.substr(eol + 1, next > eol ? next - eol - 1 : 0)});
        at = next + 1;
    }
    return out;
}

} // namespace talmo::test
