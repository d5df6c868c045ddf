// Helpers of the TPIF tests: a capturing sink, captured diagnostics, data files.
#pragma once

#include "platform/plist.h"
#include "tpif/tpif.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

namespace tpiftest {

// Collects every text handed to the sink. Like the real sink it relies on the terminator,
// since writers may pass 0 for the length.
struct StringSink {
    std::string text;
    int calls = 0;
    talmo::writeData sink{this, [](void* cookie, const char* t, size_t) {
                              auto* self = static_cast<StringSink*>(cookie);
                              self->text += t;
                              ++self->calls;
                          }};
    const talmo::writeData* get() const { return &sink; }
};

// Documents are compared whole; on a difference the test output shows both and their diff.
#define EXPECT_SAME_BYTES(actual, expected) EXPECT_EQ((actual), (expected))

inline std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline std::string dataPath(const std::string& name)
{
    return std::string(TALMO_SOURCE_DIR) + "/tests/tpif/data/" + name;
}

// Redirects the DEBUG lines into memory for the life of the object.
class DiagCapture {
public:
    DiagCapture() : file_(open_memstream(&buf_, &size_)) { talmo::tpif_errfp = file_; }
    ~DiagCapture()
    {
        talmo::tpif_errfp = previous_;
        std::fclose(file_);
        std::free(buf_);
    }
    std::string text()
    {
        std::fflush(file_);
        return std::string(buf_, size_);
    }

private:
    FILE* previous_ = talmo::tpif_errfp;
    char* buf_ = nullptr;
    size_t size_ = 0;
    FILE* file_;
};

// The document the writer makes of `ticket`; its DEBUG lines are dropped.
inline std::string render(const talmo::pl::DictPtr& ticket)
{
    StringSink s;
    DiagCapture quiet;
    talmo::WriteTPIFToSink(s.get(), ticket);
    return s.text;
}

// The dictionary whose property-list body is `body`.
inline talmo::pl::DictPtr plistDict(const std::string& body)
{
    talmo::pl::ParseResult r;
    auto d = talmo::pl::as<talmo::pl::Dictionary>(talmo::pl::readPlist("<plist><dict>" + body + "</dict></plist>", &r));
    EXPECT_TRUE(d) << r.message;
    return d;
}

} // namespace tpiftest
