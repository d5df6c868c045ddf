#include "platform/strings-table.h"

#include <cstdio>
#include <fstream>
#include <sstream>

namespace talmo {

namespace {

using Status = StringsParseResult::Status;

void appendUtf8(std::string& out, uint32_t cp)
{
    if (cp < 0x80) {
        out += char(cp);
    } else if (cp < 0x800) {
        out += char(0xC0 | (cp >> 6));
        out += char(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += char(0xE0 | (cp >> 12));
        out += char(0x80 | ((cp >> 6) & 0x3F));
        out += char(0x80 | (cp & 0x3F));
    } else {
        out += char(0xF0 | (cp >> 18));
        out += char(0x80 | ((cp >> 12) & 0x3F));
        out += char(0x80 | ((cp >> 6) & 0x3F));
        out += char(0x80 | (cp & 0x3F));
    }
}

bool isSurrogate(uint32_t u) { return u >= 0xD800 && u <= 0xDFFF; }

// Position (0-based byte offset) of the first malformed UTF-8 sequence, or npos.
size_t firstBadUtf8(std::string_view s)
{
    size_t i = 0;
    while (i < s.size()) {
        uint8_t c = uint8_t(s[i]);
        size_t n;
        uint32_t cp;
        if (c < 0x80) {
            ++i;
            continue;
        } else if (c >= 0xC2 && c <= 0xDF) {
            n = 1, cp = c & 0x1F;
        } else if (c >= 0xE0 && c <= 0xEF) {
            n = 2, cp = c & 0x0F;
        } else if (c >= 0xF0 && c <= 0xF4) {
            n = 3, cp = c & 0x07;
        } else {
            return i;
        }
        if (n > s.size() - i - 1)
            return i;
        for (size_t k = 1; k <= n; ++k) {
            uint8_t cc = uint8_t(s[i + k]);
            if ((cc & 0xC0) != 0x80)
                return i;
            cp = cp << 6 | (cc & 0x3F);
        }
        if ((n == 2 && cp < 0x800) || (n == 3 && (cp < 0x10000 || cp > 0x10FFFF)) || isSurrogate(cp))
            return i;
        i += n + 1;
    }
    return std::string_view::npos;
}

int lineAt(std::string_view s, size_t pos)
{
    int line = 1;
    for (size_t i = 0; i < pos && i < s.size(); ++i)
        line += s[i] == '\n';
    return line;
}

// UTF-16 with a byte-order mark to UTF-8; false on an unpaired surrogate or odd length.
bool utf16ToUtf8(std::string_view in, bool bigEndian, std::string& out, int& badLine)
{
    int line = 1;
    if (in.size() % 2 != 0) {
        badLine = 0;
        return false;
    }
    auto unit = [&](size_t i) -> uint32_t {
        uint8_t a = uint8_t(in[i]), b = uint8_t(in[i + 1]);
        return bigEndian ? uint32_t(a << 8 | b) : uint32_t(b << 8 | a);
    };
    for (size_t i = 0; i < in.size(); i += 2) {
        uint32_t u = unit(i);
        if (u >= 0xD800 && u <= 0xDBFF) {
            if (in.size() - i < 4) {
                badLine = line;
                return false;
            }
            uint32_t lo = unit(i + 2);
            if (lo < 0xDC00 || lo > 0xDFFF) {
                badLine = line;
                return false;
            }
            appendUtf8(out, 0x10000 + ((u - 0xD800) << 10) + (lo - 0xDC00));
            i += 2;
        } else if (u >= 0xDC00 && u <= 0xDFFF) {
            badLine = line;
            return false;
        } else {
            line += u == '\n';
            appendUtf8(out, u);
        }
    }
    return true;
}

bool isBare(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '.' ||
           c == ':' || c == '/' || c == '$' || c == '-';
}

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

class Parser {
public:
    explicit Parser(std::string_view text) : s_(text) { }

    pl::DictPtr run(StringsParseResult& r)
    {
        auto table = pl::makeDict();
        for (;;) {
            if (!skipSpaceAndComments(r))
                return nullptr;
            if (pos_ >= s_.size())
                return table;
            std::string key, value;
            int keyLine = line_;
            if (!token(key, "key", r))
                return nullptr;
            if (!skipSpaceAndComments(r))
                return nullptr;
            if (pos_ < s_.size() && s_[pos_] == '=') {
                ++pos_;
                if (!skipSpaceAndComments(r))
                    return nullptr;
                if (!token(value, "value", r))
                    return nullptr;
                if (!skipSpaceAndComments(r))
                    return nullptr;
            } else {
                value = key;
            }
            if (pos_ >= s_.size() || s_[pos_] != ';')
                return fail(r, Status::Syntax, line_,
                            "expected ';' after the entry for \"" + clip(key) + "\" (line " + std::to_string(keyLine) +
                                ")");
            ++pos_;
            table->setString(key, std::move(value));
        }
    }

private:
    static std::string clip(const std::string& s) { return s.size() > 40 ? s.substr(0, 40) + "..." : s; }

    std::nullptr_t fail(StringsParseResult& r, Status st, int line, std::string msg)
    {
        r.status = st;
        r.line = line;
        r.message = std::move(msg);
        return nullptr;
    }

    bool skipSpaceAndComments(StringsParseResult& r)
    {
        while (pos_ < s_.size()) {
            char c = s_[pos_];
            if (c == '\n') {
                ++line_;
                ++pos_;
            } else if (c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v') {
                ++pos_;
            } else if (c == '/' && pos_ + 1 < s_.size() && s_[pos_ + 1] == '*') {
                int start = line_;
                size_t end = s_.find("*/", pos_ + 2);
                if (end == std::string_view::npos) {
                    fail(r, Status::Unterminated, start, "comment not closed");
                    return false;
                }
                for (size_t i = pos_; i < end; ++i)
                    line_ += s_[i] == '\n';
                pos_ = end + 2;
            } else if (c == '/' && pos_ + 1 < s_.size() && s_[pos_ + 1] == '/') {
                size_t end = s_.find('\n', pos_);
                pos_ = end == std::string_view::npos ? s_.size() : end;
            } else {
                break;
            }
        }
        return true;
    }

    bool token(std::string& out, const char* what, StringsParseResult& r)
    {
        if (pos_ >= s_.size()) {
            fail(r, Status::Syntax, line_, std::string("expected a ") + what + " at the end of the table");
            return false;
        }
        if (s_[pos_] == '"')
            return quoted(out, r);
        size_t start = pos_;
        while (pos_ < s_.size() && isBare(s_[pos_]))
            ++pos_;
        if (pos_ == start) {
            fail(r, Status::Syntax, line_, std::string("expected a ") + what + ", found '" + s_[pos_] + "'");
            return false;
        }
        out.assign(s_.substr(start, pos_ - start));
        return true;
    }

    bool hex4(size_t at, uint32_t& u)
    {
        if (s_.size() - at < 4)
            return false;
        u = 0;
        for (size_t k = 0; k < 4; ++k) {
            int h = hexValue(s_[at + k]);
            if (h < 0)
                return false;
            u = u << 4 | uint32_t(h);
        }
        return true;
    }

    bool quoted(std::string& out, StringsParseResult& r)
    {
        int start = line_;
        ++pos_; // opening quote
        while (pos_ < s_.size()) {
            char c = s_[pos_];
            if (c == '"') {
                ++pos_;
                return true;
            }
            if (c == '\n')
                ++line_;
            if (c != '\\') {
                out += c;
                ++pos_;
                continue;
            }
            if (pos_ + 1 >= s_.size())
                break;
            char e = s_[pos_ + 1];
            pos_ += 2;
            switch (e) {
            case '"':
                out += '"';
                break;
            case '\\':
                out += '\\';
                break;
            case '\'':
                out += '\'';
                break;
            case 'n':
                out += '\n';
                break;
            case 't':
                out += '\t';
                break;
            case 'r':
                out += '\r';
                break;
            case '0':
                out += '\0';
                break;
            case 'U':
            case 'u': {
                uint32_t u;
                if (!hex4(pos_, u)) {
                    fail(r, Status::BadEscape, line_, "\\U needs four hex digits");
                    return false;
                }
                pos_ += 4;
                if (u >= 0xD800 && u <= 0xDBFF) {
                    uint32_t lo;
                    if (s_.size() - pos_ < 2 || s_[pos_] != '\\' || (s_[pos_ + 1] != 'U' && s_[pos_ + 1] != 'u') ||
                        !hex4(pos_ + 2, lo) || lo < 0xDC00 || lo > 0xDFFF) {
                        fail(r, Status::BadEscape, line_, "unpaired surrogate \\U escape");
                        return false;
                    }
                    pos_ += 6;
                    u = 0x10000 + ((u - 0xD800) << 10) + (lo - 0xDC00);
                } else if (u >= 0xDC00 && u <= 0xDFFF) {
                    fail(r, Status::BadEscape, line_, "unpaired surrogate \\U escape");
                    return false;
                }
                appendUtf8(out, u);
                break;
            }
            default:
                fail(r, Status::BadEscape, line_, std::string("unknown escape \\") + e);
                return false;
            }
        }
        fail(r, Status::Unterminated, start, "string not closed");
        return false;
    }

    std::string_view s_;
    size_t pos_ = 0;
    int line_ = 1;
};

} // namespace

pl::DictPtr parseStringsTable(std::string_view bytes, StringsParseResult* result)
{
    StringsParseResult local;
    StringsParseResult& r = result ? *result : local;
    r = StringsParseResult{};
    if (bytes.size() > kMaxStringsBytes) {
        r.status = Status::TooLarge;
        r.message = "table of " + std::to_string(bytes.size()) + " bytes exceeds the limit of " +
                    std::to_string(kMaxStringsBytes);
        return nullptr;
    }

    std::string decoded;
    std::string_view text = bytes;
    auto starts = [&](std::string_view bom) { return bytes.substr(0, bom.size()) == bom; };
    if (starts("\xFF\xFE") || starts("\xFE\xFF")) {
        int badLine = 0;
        if (!utf16ToUtf8(bytes.substr(2), bytes[0] == '\xFE', decoded, badLine)) {
            r.status = Status::BadEncoding;
            r.line = badLine;
            r.message = badLine ? "malformed UTF-16" : "UTF-16 table of odd length";
            return nullptr;
        }
        text = decoded;
    } else {
        if (starts("\xEF\xBB\xBF"))
            text.remove_prefix(3);
        size_t bad = firstBadUtf8(text);
        if (bad != std::string_view::npos) {
            r.status = Status::BadEncoding;
            r.line = lineAt(text, bad);
            r.message = "malformed UTF-8";
            return nullptr;
        }
    }
    return Parser(text).run(r);
}

pl::DictPtr readStringsFile(const std::string& path, StringsParseResult* result)
{
    StringsParseResult local;
    StringsParseResult& r = result ? *result : local;
    r = StringsParseResult{};
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        r.status = Status::NotFound;
        r.message = path + ": cannot be opened";
        return nullptr;
    }
    in.seekg(0, std::ios::end);
    auto size = in.tellg();
    if (size < 0 || uint64_t(size) > kMaxStringsBytes) {
        r.status = Status::TooLarge;
        r.message = path + ": too large";
        return nullptr;
    }
    in.seekg(0);
    std::string bytes(size_t(size), '\0');
    in.read(bytes.data(), size);
    if (!in) {
        r.status = Status::NotFound;
        r.message = path + ": read failed";
        return nullptr;
    }
    return parseStringsTable(bytes, &r);
}

std::string formatStringsEntry(std::string_view key, std::string_view value)
{
    auto quote = [](std::string_view s) {
        std::string out = "\"";
        for (char c : s) {
            switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\t':
                out += "\\t";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\0':
                out += "\\0";
                break;
            default:
                out += c;
            }
        }
        return out + "\"";
    };
    return quote(key) + " = " + quote(value) + ";";
}

} // namespace talmo
