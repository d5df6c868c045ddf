// ".strings" tables: the localization tables of a bundle ("key" = "value"; lines).
//
// Grammar accepted (strict; anything else is an error with its line):
//   table   := { entry | comment | whitespace }
//   entry   := token [ "=" token ] ";"        a lone token maps the key to itself
//   token   := '"' chars '"' | bare           bare = [A-Za-z0-9_.:/$-]+
//   escapes := \" \\ \' \n \t \r \0 and \Uxxxx or \uxxxx (UTF-16 code unit; surrogate
//              pairs combine, a lone surrogate is an error)
//   comment := /* ... */ | // ... end of line
// Input is UTF-8 (a UTF-8 byte-order mark is skipped) or UTF-16 with a byte-order mark.
// Malformed UTF-8 or UTF-16 is an error. A key given twice keeps its last value at the
// position of its first appearance. Inputs larger than kMaxStringsBytes are refused.
#pragma once

#include "platform/values.h"

#include <string>
#include <string_view>

namespace talmo {

struct StringsParseResult {
    enum class Status { Ok, BadEncoding, Syntax, BadEscape, Unterminated, TooLarge, NotFound };
    Status status = Status::Ok;
    int line = 0; // 1-based line of the problem; 0 when the whole input is at fault
    std::string message;
    explicit operator bool() const { return status == Status::Ok; }
};

inline constexpr size_t kMaxStringsBytes = 16u << 20;

// The table as a dictionary of strings in file order; null on failure, with `result` filled
// (when given). An empty input is an empty table.
pl::DictPtr parseStringsTable(std::string_view bytes, StringsParseResult* result = nullptr);
pl::DictPtr readStringsFile(const std::string& path, StringsParseResult* result = nullptr);

// Writes one entry in the form the parser reads back: "key" = "value";
std::string formatStringsEntry(std::string_view key, std::string_view value);

} // namespace talmo
