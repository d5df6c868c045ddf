// XML property lists: the standard format (XML declaration, plist DOCTYPE, tab indentation).
// Reading goes through libxml2 with the network off and no entity expansion; writing is ours,
// so that the output is byte-stable and never carries characters XML forbids.
#pragma once

#include "platform/values.h"

#include <string>
#include <string_view>

namespace talmo::pl {

// A parse result: status, the line where it stopped, and a message naming the problem.
struct ParseResult {
    enum class Status { Ok, NotXml, NotPlist, BadElement, BadValue, TooDeep, TooLarge };
    Status status = Status::Ok;
    int line = 0;
    std::string message;
    explicit operator bool() const { return status == Status::Ok; }
};

inline constexpr int kMaxPlistDepth = 128;
inline constexpr size_t kMaxPlistBytes = 64u << 20;

// Parses an XML property list. Containers and leaves are mutable. On failure returns null and
// fills `result` (when given).
ValuePtr readPlist(std::string_view xml, ParseResult* result = nullptr);
ValuePtr readPlistFile(const std::string& path, ParseResult* result = nullptr);

// Serialises `root` as an XML property list. Text is written as UTF-8 with &, <, > escaped,
// CR as a character reference so it survives parsing, and characters XML 1.0 forbids
// (C0 controls but TAB/LF/CR, U+FFFE/U+FFFF, malformed UTF-8) dropped.
std::string writePlist(const ValuePtr& root);

// The same escaping, for writers of other XML texts.
std::string escapeXmlText(std::string_view s, bool escapeQuotes = false);

// Strict number syntax of the XML format: "0,75" is an error, never 0.
bool parseIntegerText(std::string_view s, int64_t& out);
bool parseRealText(std::string_view s, double& out);

// ISO 8601 "YYYY-MM-DDTHH:MM:SSZ" <-> seconds since 2001-01-01.
bool parseDateText(std::string_view s, double& out);
std::string formatDateText(double secondsSince2001);

std::string base64Encode(const std::vector<uint8_t>& bytes);
bool base64Decode(std::string_view text, std::vector<uint8_t>& out);

} // namespace talmo::pl
