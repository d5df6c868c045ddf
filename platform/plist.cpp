#include "platform/plist.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>

namespace talmo::pl {

namespace {

struct DocDeleter {
    void operator()(xmlDoc* d) const { xmlFreeDoc(d); }
};
struct CtxtDeleter {
    void operator()(xmlParserCtxt* c) const { xmlFreeParserCtxt(c); }
};
using DocPtr = std::unique_ptr<xmlDoc, DocDeleter>;
using CtxtPtr = std::unique_ptr<xmlParserCtxt, CtxtDeleter>;

// libxml2 reports failed encoding conversions through its generic handler, past
// XML_PARSE_NOERROR; reading a damaged file must print nothing, so that handler is silenced for
// the parse (it is per thread) and restored afterwards.
void ignoreGenericError(void*, const char*, ...) { }

class SilentGenericErrors {
public:
    SilentGenericErrors() : func_(xmlGenericError), context_(xmlGenericErrorContext)
    {
        xmlSetGenericErrorFunc(nullptr, ignoreGenericError);
    }
    ~SilentGenericErrors() { xmlSetGenericErrorFunc(context_, func_); }
    SilentGenericErrors(const SilentGenericErrors&) = delete;
    SilentGenericErrors& operator=(const SilentGenericErrors&) = delete;

private:
    xmlGenericErrorFunc func_;
    void* context_;
};

bool isXmlSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

std::string_view trim(std::string_view s)
{
    while (!s.empty() && isXmlSpace(s.front()))
        s.remove_prefix(1);
    while (!s.empty() && isXmlSpace(s.back()))
        s.remove_suffix(1);
    return s;
}

bool nameIs(const xmlNode* n, const char* name)
{
    return n && n->name && std::strcmp(reinterpret_cast<const char*>(n->name), name) == 0;
}

class Reader {
public:
    explicit Reader(ParseResult& r) : result_(r) { }

    ValuePtr value(const xmlNode* n, int depth)
    {
        if (depth > kMaxPlistDepth)
            return fail(ParseResult::Status::TooDeep, n, "nesting deeper than " + std::to_string(kMaxPlistDepth));
        const char* name = reinterpret_cast<const char*>(n->name);
        if (nameIs(n, "dict"))
            return dict(n, depth);
        if (nameIs(n, "array"))
            return array(n, depth);
        std::string text;
        if (!leafText(n, text))
            return nullptr;
        if (nameIs(n, "string"))
            return makeString(std::move(text));
        if (nameIs(n, "integer")) {
            int64_t v = 0;
            if (!parseIntegerText(trim(text), v))
                return fail(ParseResult::Status::BadValue, n, "<integer> \"" + text + "\" is not an integer");
            return makeInt(v);
        }
        if (nameIs(n, "real")) {
            double v = 0;
            if (!parseRealText(trim(text), v))
                return fail(ParseResult::Status::BadValue, n, "<real> \"" + text + "\" is not a number");
            return makeReal(v);
        }
        if (nameIs(n, "true") || nameIs(n, "false")) {
            if (!trim(text).empty())
                return fail(ParseResult::Status::BadValue, n, std::string("<") + name + "> has content");
            return makeBool(nameIs(n, "true"));
        }
        if (nameIs(n, "date")) {
            double v = 0;
            if (!parseDateText(trim(text), v))
                return fail(ParseResult::Status::BadValue, n, "<date> \"" + text + "\" is not an ISO 8601 date");
            return makeDate(v);
        }
        if (nameIs(n, "data")) {
            std::vector<uint8_t> bytes;
            if (!base64Decode(text, bytes))
                return fail(ParseResult::Status::BadValue, n, "<data> is not base64");
            return makeData(std::move(bytes));
        }
        return fail(ParseResult::Status::BadElement, n, std::string("unknown element <") + name + ">");
    }

    ValuePtr fail(ParseResult::Status s, const xmlNode* n, std::string msg)
    {
        if (result_.status == ParseResult::Status::Ok) {
            result_.status = s;
            result_.line = n ? static_cast<int>(xmlGetLineNo(n)) : 0;
            result_.message = std::move(msg);
        }
        return nullptr;
    }

    // The next element among n's following siblings, failing on stray text.
    bool nextElement(const xmlNode*& n, const xmlNode* parent)
    {
        for (; n; n = n->next) {
            if (n->type == XML_ELEMENT_NODE)
                return true;
            if (n->type == XML_TEXT_NODE || n->type == XML_CDATA_SECTION_NODE) {
                const char* c = reinterpret_cast<const char*>(n->content);
                if (c && !trim(c).empty()) {
                    fail(ParseResult::Status::BadElement, parent, "text outside a value element");
                    return false;
                }
            } else if (n->type == XML_ENTITY_REF_NODE) {
                fail(ParseResult::Status::BadElement, parent, "entity reference outside a value element");
                return false;
            }
        }
        return false;
    }

private:
    bool leafText(const xmlNode* n, std::string& out)
    {
        for (const xmlNode* c = n->children; c; c = c->next) {
            if (c->type == XML_TEXT_NODE || c->type == XML_CDATA_SECTION_NODE) {
                if (c->content)
                    out += reinterpret_cast<const char*>(c->content);
            } else if (c->type == XML_ELEMENT_NODE) {
                fail(ParseResult::Status::BadElement, c,
                     std::string("element inside <") + reinterpret_cast<const char*>(n->name) + ">");
                return false;
            } else if (c->type == XML_ENTITY_REF_NODE) {
                fail(ParseResult::Status::BadValue, c, "unexpanded entity reference");
                return false;
            }
            if (out.size() > kMaxPlistBytes) {
                fail(ParseResult::Status::TooLarge, n, "text too large");
                return false;
            }
        }
        return true;
    }

    ValuePtr dict(const xmlNode* n, int depth)
    {
        auto d = makeDict();
        const xmlNode* c = n->children;
        while (nextElement(c, n)) {
            if (!nameIs(c, "key"))
                return fail(ParseResult::Status::BadElement, c, "dictionary entry without <key>");
            std::string key;
            if (!leafText(c, key))
                return nullptr;
            const xmlNode* v = c->next;
            if (!nextElement(v, n))
                return result_.status == ParseResult::Status::Ok
                           ? fail(ParseResult::Status::BadElement, c, "<key>" + key + "</key> has no value")
                           : nullptr;
            auto val = value(v, depth + 1);
            if (!val)
                return nullptr;
            d->set(key, std::move(val));
            c = v->next;
        }
        return result_.status == ParseResult::Status::Ok ? d : nullptr;
    }

    ValuePtr array(const xmlNode* n, int depth)
    {
        auto a = makeArray();
        const xmlNode* c = n->children;
        while (nextElement(c, n)) {
            auto val = value(c, depth + 1);
            if (!val)
                return nullptr;
            a->append(std::move(val));
            c = c->next;
        }
        return result_.status == ParseResult::Status::Ok ? a : nullptr;
    }

    ParseResult& result_;
};

void appendUtf8(std::string& out, uint32_t cp)
{
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

// Decodes one UTF-8 sequence at s[i]; returns its length, or 0 when malformed (overlong,
// surrogate, beyond U+10FFFF, truncated).
size_t decodeUtf8(std::string_view s, size_t i, uint32_t& cp)
{
    auto b = [&](size_t k) { return static_cast<unsigned char>(s[k]); };
    unsigned char c = b(i);
    size_t len;
    uint32_t min;
    if (c < 0x80) {
        cp = c;
        return 1;
    } else if ((c & 0xE0) == 0xC0) {
        len = 2, cp = c & 0x1F, min = 0x80;
    } else if ((c & 0xF0) == 0xE0) {
        len = 3, cp = c & 0x0F, min = 0x800;
    } else if ((c & 0xF8) == 0xF0) {
        len = 4, cp = c & 0x07, min = 0x10000;
    } else {
        return 0;
    }
    if (len > s.size() - i)
        return 0;
    for (size_t k = 1; k < len; ++k) {
        if ((b(i + k) & 0xC0) != 0x80)
            return 0;
        cp = (cp << 6) | (b(i + k) & 0x3F);
    }
    if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
        return 0;
    return len;
}

void writeValue(std::string& out, const ValuePtr& v, int indent);

void tabs(std::string& out, int n) { out.append(static_cast<size_t>(n), '\t'); }

void writeValue(std::string& out, const ValuePtr& v, int indent)
{
    tabs(out, indent);
    switch (v->type()) {
    case Type::String:
        out += "<string>" + escapeXmlText(as<String>(v)->text) + "</string>\n";
        break;
    case Type::Integer:
        out += "<integer>" + std::to_string(as<Integer>(v)->value) + "</integer>\n";
        break;
    case Type::Real: {
        double d = as<Real>(v)->value;
        char buf[64];
        std::string text;
        if (std::isnan(d))
            text = "nan";
        else if (std::isinf(d))
            text = d < 0 ? "-inf" : "+inf";
        else {
            auto r = std::to_chars(buf, buf + sizeof buf, d);
            text.assign(buf, r.ptr);
        }
        out += "<real>" + text + "</real>\n";
        break;
    }
    case Type::Boolean:
        out += as<Boolean>(v)->value ? "<true/>\n" : "<false/>\n";
        break;
    case Type::Date:
        out += "<date>" + formatDateText(as<Date>(v)->seconds) + "</date>\n";
        break;
    case Type::Data: {
        out += "<data>\n";
        std::string b64 = base64Encode(as<Data>(v)->bytes);
        for (size_t i = 0; i < b64.size(); i += 68) {
            tabs(out, indent);
            out.append(b64, i, 68);
            out += '\n';
        }
        tabs(out, indent);
        out += "</data>\n";
        break;
    }
    case Type::Array: {
        auto a = as<Array>(v);
        if (a->empty()) {
            out += "<array/>\n";
            break;
        }
        out += "<array>\n";
        for (const auto& item : *a)
            writeValue(out, item, indent + 1);
        tabs(out, indent);
        out += "</array>\n";
        break;
    }
    case Type::Dictionary: {
        auto d = as<Dictionary>(v);
        if (d->empty()) {
            out += "<dict/>\n";
            break;
        }
        out += "<dict>\n";
        for (const auto& [k, item] : *d) {
            tabs(out, indent + 1);
            out += "<key>" + escapeXmlText(k) + "</key>\n";
            writeValue(out, item, indent + 1);
        }
        tabs(out, indent);
        out += "</dict>\n";
        break;
    }
    }
}

constexpr int64_t kUnixTo2001 = 978307200;

int64_t daysFromCivil(int64_t y, unsigned m, unsigned d)
{
    y -= m <= 2;
    const int64_t era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<int64_t>(doe) - 719468;
}

void civilFromDays(int64_t z, int64_t& y, unsigned& m, unsigned& d)
{
    z += 719468;
    const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const unsigned doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    y = static_cast<int64_t>(yoe) + era * 400;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    d = doy - (153 * mp + 2) / 5 + 1;
    m = mp < 10 ? mp + 3 : mp - 9;
    y += m <= 2;
}

} // namespace

bool parseIntegerText(std::string_view s, int64_t& out)
{
    if (s.empty())
        return false;
    bool neg = false;
    size_t i = 0;
    if (s[0] == '+' || s[0] == '-') {
        neg = s[0] == '-';
        i = 1;
    }
    if (i == s.size())
        return false;
    // Accumulate as a negative number so that INT64_MIN parses.
    int64_t v = 0;
    for (; i < s.size(); ++i) {
        if (s[i] < '0' || s[i] > '9')
            return false;
        int digit = s[i] - '0';
        if (v < (INT64_MIN + digit) / 10)
            return false;
        v = v * 10 - digit;
    }
    if (!neg) {
        if (v == INT64_MIN)
            return false;
        v = -v;
    }
    out = v;
    return true;
}

bool parseRealText(std::string_view s, double& out)
{
    if (s.empty() || s.size() > 512)
        return false;
    std::string lower;
    for (char c : s)
        lower += (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
    std::string_view body = lower;
    bool neg = false;
    if (body[0] == '+' || body[0] == '-') {
        neg = body[0] == '-';
        body.remove_prefix(1);
    }
    if (body == "nan") {
        out = std::nan("");
        return true;
    }
    if (body == "inf" || body == "infinity") {
        out = neg ? -HUGE_VAL : HUGE_VAL;
        return true;
    }
    // Strict grammar: digits [. digits] [e [sign] digits], at least one mantissa digit.
    size_t i = 0, digits = 0;
    while (i < body.size() && body[i] >= '0' && body[i] <= '9')
        ++i, ++digits;
    if (i < body.size() && body[i] == '.') {
        ++i;
        while (i < body.size() && body[i] >= '0' && body[i] <= '9')
            ++i, ++digits;
    }
    if (digits == 0)
        return false;
    if (i < body.size() && body[i] == 'e') {
        ++i;
        if (i < body.size() && (body[i] == '+' || body[i] == '-'))
            ++i;
        size_t e = 0;
        while (i < body.size() && body[i] >= '0' && body[i] <= '9')
            ++i, ++e;
        if (e == 0)
            return false;
    }
    if (i != body.size())
        return false;
    double v = 0;
    auto r = std::from_chars(body.data(), body.data() + body.size(), v);
    if (r.ec == std::errc::result_out_of_range) {
        // Overflow becomes infinity, underflow zero, as strtod does (the grammar is checked).
        v = std::strtod(std::string(body).c_str(), nullptr);
    } else if (r.ec != std::errc() || r.ptr != body.data() + body.size()) {
        return false;
    }
    out = neg ? -v : v;
    return true;
}

bool parseDateText(std::string_view s, double& out)
{
    // YYYY-MM-DDTHH:MM:SSZ
    if (s.size() != 20 || s[4] != '-' || s[7] != '-' || s[10] != 'T' || s[13] != ':' || s[16] != ':' || s[19] != 'Z')
        return false;
    auto num = [&](size_t at, size_t len, int& v) {
        v = 0;
        for (size_t k = at; k < at + len; ++k) {
            if (s[k] < '0' || s[k] > '9')
                return false;
            v = v * 10 + (s[k] - '0');
        }
        return true;
    };
    int y, mo, d, h, mi, se;
    if (!num(0, 4, y) || !num(5, 2, mo) || !num(8, 2, d) || !num(11, 2, h) || !num(14, 2, mi) || !num(17, 2, se))
        return false;
    static const int mdays[] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (mo < 1 || mo > 12 || d < 1 || d > mdays[mo - 1] || h > 23 || mi > 59 || se > 60)
        return false;
    int64_t days = daysFromCivil(y, static_cast<unsigned>(mo), static_cast<unsigned>(d));
    const int64_t seconds = days * 86400 + h * 3600 + mi * 60 + se - kUnixTo2001;
    // A leap second at the end of 9999 names an instant the text form cannot write back.
    if (seconds > daysFromCivil(9999, 12, 31) * 86400 + 86399 - kUnixTo2001)
        return false;
    out = static_cast<double>(seconds);
    return true;
}

std::string formatDateText(double seconds)
{
    // Whole seconds, clamped to the years the text form can hold.
    const double lo = static_cast<double>(daysFromCivil(0, 1, 1) * 86400 - kUnixTo2001);
    const double hi = static_cast<double>(daysFromCivil(9999, 12, 31) * 86400 + 86399 - kUnixTo2001);
    if (std::isnan(seconds))
        seconds = 0;
    seconds = std::floor(std::min(std::max(seconds, lo), hi));
    int64_t t = static_cast<int64_t>(seconds) + kUnixTo2001;
    int64_t days = t >= 0 ? t / 86400 : (t - 86399) / 86400;
    int64_t rem = t - days * 86400;
    int64_t y;
    unsigned m, d;
    civilFromDays(days, y, m, d);
    char buf[40];
    std::snprintf(buf, sizeof buf, "%04lld-%02u-%02uT%02d:%02d:%02dZ", static_cast<long long>(y), m, d,
                  static_cast<int>(rem / 3600), static_cast<int>(rem / 60 % 60), static_cast<int>(rem % 60));
    return buf;
}

std::string base64Encode(const std::vector<uint8_t>& bytes)
{
    static const char tbl[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    size_t i = 0;
    for (; i + 2 < bytes.size(); i += 3) {
        uint32_t v = (bytes[i] << 16) | (bytes[i + 1] << 8) | bytes[i + 2];
        out += tbl[v >> 18], out += tbl[(v >> 12) & 63], out += tbl[(v >> 6) & 63], out += tbl[v & 63];
    }
    if (i + 1 == bytes.size()) {
        uint32_t v = bytes[i] << 16;
        out += tbl[v >> 18], out += tbl[(v >> 12) & 63], out += "==";
    } else if (i + 2 == bytes.size()) {
        uint32_t v = (bytes[i] << 16) | (bytes[i + 1] << 8);
        out += tbl[v >> 18], out += tbl[(v >> 12) & 63], out += tbl[(v >> 6) & 63], out += '=';
    }
    return out;
}

bool base64Decode(std::string_view text, std::vector<uint8_t>& out)
{
    out.clear();
    uint32_t acc = 0;
    int bits = 0, pad = 0;
    for (char c : text) {
        int v;
        if (c >= 'A' && c <= 'Z')
            v = c - 'A';
        else if (c >= 'a' && c <= 'z')
            v = c - 'a' + 26;
        else if (c >= '0' && c <= '9')
            v = c - '0' + 52;
        else if (c == '+')
            v = 62;
        else if (c == '/')
            v = 63;
        else if (c == '=') {
            ++pad;
            continue;
        } else if (isXmlSpace(c))
            continue;
        else
            return false;
        if (pad)
            return false; // data after padding
        acc = (acc << 6) | static_cast<uint32_t>(v);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            out.push_back(static_cast<uint8_t>((acc >> bits) & 0xFF));
        }
    }
    return pad <= 2;
}

std::string escapeXmlText(std::string_view s, bool escapeQuotes)
{
    std::string out;
    out.reserve(s.size());
    for (size_t i = 0; i < s.size();) {
        uint32_t cp = 0;
        size_t len = decodeUtf8(s, i, cp);
        if (len == 0) {
            ++i; // a malformed byte is dropped, never copied
            continue;
        }
        i += len;
        switch (cp) {
        case '&':
            out += "&amp;";
            continue;
        case '<':
            out += "&lt;";
            continue;
        case '>':
            out += "&gt;";
            continue;
        case '"':
            out += escapeQuotes ? "&quot;" : "\"";
            continue;
        case '\r':
            out += "&#xD;";
            continue;
        case '\t':
        case '\n':
            out += static_cast<char>(cp);
            continue;
        default:
            break;
        }
        if (cp < 0x20 || cp == 0xFFFE || cp == 0xFFFF)
            continue;
        appendUtf8(out, cp);
    }
    return out;
}

ValuePtr readPlist(std::string_view xml, ParseResult* result)
{
    ParseResult local;
    ParseResult& r = result ? *result : local;
    r = ParseResult{};
    if (xml.size() > kMaxPlistBytes) {
        r.status = ParseResult::Status::TooLarge;
        r.message = "property list larger than " + std::to_string(kMaxPlistBytes) + " bytes";
        return nullptr;
    }
    CtxtPtr ctxt(xmlNewParserCtxt());
    if (!ctxt) {
        r.status = ParseResult::Status::NotXml;
        r.message = "out of memory";
        return nullptr;
    }
    const int options = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
    SilentGenericErrors quiet;
    DocPtr doc(xmlCtxtReadMemory(ctxt.get(), xml.data(), static_cast<int>(xml.size()), nullptr, nullptr, options));
    if (!doc) {
        const xmlError* e = xmlCtxtGetLastError(ctxt.get());
        r.status = ParseResult::Status::NotXml;
        r.line = e ? e->line : 0;
        std::string msg = e && e->message ? e->message : "not XML";
        while (!msg.empty() && msg.back() == '\n')
            msg.pop_back();
        r.message = msg;
        return nullptr;
    }
    // Entities declared by a document could expand after parsing; such files are not ours.
    if (xmlDtd* dtd = xmlGetIntSubset(doc.get()); dtd && (dtd->entities || dtd->pentities)) {
        r.status = ParseResult::Status::NotPlist;
        r.message = "document declares entities";
        return nullptr;
    }
    Reader reader(r);
    const xmlNode* root = xmlDocGetRootElement(doc.get());
    if (!root) {
        r.status = ParseResult::Status::NotPlist;
        r.message = "no root element";
        return nullptr;
    }
    if (!nameIs(root, "plist"))
        return reader.value(root, 0);
    const xmlNode* first = root->children;
    if (!reader.nextElement(first, root)) {
        if (r.status == ParseResult::Status::Ok)
            reader.fail(ParseResult::Status::NotPlist, root, "<plist> holds no value");
        return nullptr;
    }
    ValuePtr v = reader.value(first, 1);
    if (!v)
        return nullptr;
    const xmlNode* extra = first->next;
    if (reader.nextElement(extra, root))
        return reader.fail(ParseResult::Status::NotPlist, extra, "<plist> holds more than one value");
    if (r.status != ParseResult::Status::Ok)
        return nullptr;
    return v;
}

ValuePtr readPlistFile(const std::string& path, ParseResult* result)
{
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        if (result) {
            *result = ParseResult{};
            result->status = ParseResult::Status::NotXml;
            result->message = "cannot open " + path;
        }
        return nullptr;
    }
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    return readPlist(text, result);
}

std::string writePlist(const ValuePtr& root)
{
    std::string out =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
        "<plist version=\"1.0\">\n";
    if (root)
        writeValue(out, root, 0);
    out += "</plist>\n";
    return out;
}

} // namespace talmo::pl
