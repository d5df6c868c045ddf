// User texts can never change the document's structure: the escaping policy, the cut at a line
// buffer's end, and a seeded run of hostile strings through every user-text field, re-parsed
// with libxml2.
#include "tpif-test-util.h"

#include "platform/plist.h"

#include <libxml/parser.h>

#include <functional>
#include <map>
#include <random>

using namespace talmo;

namespace {

TEST(TPifEscape, Policy)
{
    // clang-format off
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"plain", "plain"}, {"a & b", "a &amp; b"}, {"<tag attr=\"v\">", "&lt;tag attr=&quot;v&quot;&gt;"},
        {"]]>", "]]&gt;"}, {"it's", "it's"}, {"tab\tlf\ncr\r", "tab\tlf\ncr&#xD;"}, {std::string("nul\0x", 5), "nulx"},
        {"\x01\x02\x08\x0B\x0C\x0E\x1F\x7F", "\x7F"}, {"&amp;", "&amp;amp;"},
        {"\xEF\xBF\xBE\xEF\xBF\xBF|", "|"},           // U+FFFE, U+FFFF
        {"\xED\xA0\x80\xED\xBF\xBF|", "|"},           // surrogates
        {"\xC3(\x80\xF4\x90\x80\x80\xC0\xAF|", "(|"}, // truncated, stray, too large, overlong
        {"\xF0\x9F\x98\x80 \xD7\xA9\xD7\x9C e\xCC\x81", "\xF0\x9F\x98\x80 \xD7\xA9\xD7\x9C e\xCC\x81"},
    };
    // clang-format on
    for (const auto& [in, out] : cases)
        EXPECT_EQ(XMLCreateStringByEscapingEntities(in), out) << in;
}

TEST(TPifEscape, FitNeverSplitsACharacterOrAnEntity)
{
    // clang-format off
    const std::tuple<std::string, size_t, size_t> cases[] = {
        {"abc", 3, 3}, {"abc", 10, 3}, {"abc", 2, 2}, {"a&amp;b", 1, 1}, {"a&amp;b", 5, 1}, {"a&amp;b", 6, 6},
        {"a&#xD;", 5, 1}, {"a\xF0\x9F\x98\x80", 4, 1}, {"a\xF0\x9F\x98\x80", 5, 5}, {"\xD7\xA9\xD7\x9C", 3, 2},
        {"\xE2\x82\xAC", 2, 0}, {"", 0, 0}, {"x", 0, 0},
    };
    // clang-format on
    for (const auto& [text, room, expected] : cases)
        EXPECT_EQ(TPifFitEscapedText(text, room), expected) << text << " in " << room;
}

// --- an independent model of the sanitised form ---

// Characters of `s` as the policy keeps them (code point and bytes): strict UTF-8, a malformed
// byte dropped alone.
struct Kept {
    uint32_t cp;
    std::string bytes;
};

std::vector<Kept> keptCodePoints(const std::string& s)
{
    std::vector<Kept> out;
    size_t i = 0;
    auto byte = [&](size_t k) { return static_cast<unsigned char>(s[k]); };
    while (i < s.size()) {
        unsigned char c = byte(i);
        size_t len = c < 0x80 ? 1 : (c >> 5) == 6 ? 2 : (c >> 4) == 14 ? 3 : (c >> 3) == 30 ? 4 : 0;
        uint32_t cp = len == 1 ? c : len == 2 ? (c & 0x1Fu) : len == 3 ? (c & 0x0Fu) : (c & 0x07u);
        bool ok = len > 0 && i + len <= s.size();
        for (size_t k = 1; ok && k < len; ++k) {
            ok = (byte(i + k) & 0xC0) == 0x80;
            cp = (cp << 6) | (byte(i + k) & 0x3Fu);
        }
        const uint32_t minimum[] = {0, 0, 0x80, 0x800, 0x10000};
        ok = ok && cp >= minimum[len] && cp <= 0x10FFFF && !(cp >= 0xD800 && cp <= 0xDFFF);
        if (!ok) {
            ++i;
            continue;
        }
        if (cp == 9 || cp == 10 || cp == 13 || (cp >= 0x20 && cp != 0xFFFE && cp != 0xFFFF))
            out.push_back({cp, s.substr(i, len)});
        i += len;
    }
    return out;
}

// Bytes a character takes once escaped.
size_t escapedSize(const Kept& k)
{
    switch (k.cp) {
    case '&':
    case '\r':
        return 5; // &amp; &#xD;
    case '<':
    case '>':
        return 4; // &lt; &gt;
    case '"':
        return 6; // &quot;
    default:
        return k.bytes.size();
    }
}

// What a parser reads back: the kept text, cut (when `room` is given) to the longest prefix
// whose escaped form fits the room.
std::string readBack(const std::vector<Kept>& kept, size_t room = SIZE_MAX)
{
    std::string out;
    size_t used = 0;
    for (const Kept& k : kept) {
        used += escapedSize(k);
        if (used > room)
            break;
        out += k.bytes;
    }
    return out;
}

// Room a one-line element leaves for its text in the 1024-byte line buffer.
size_t roomFor(const std::string& open, const std::string& close)
{
    return kTPifLineBufferSize - 1 - open.size() - close.size();
}

size_t nameRoom(const std::string& tabs, const char* element)
{
    return roomFor(tabs + "<" + element + " syntax=\"name\" xml:space=\"preserve\">",
                   std::string("</") + element + ">\n");
}

// --- the hostile generator ---

std::string hostile(std::mt19937& rng)
{
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    static const std::vector<std::string> pieces = [] { // separated by '|', none of which holds one
        std::vector<std::string> out;
        std::istringstream in("&|<|>|\"|'|]]>|<![CDATA[|&amp;|&#x1;|&#xD;|<!--|-->|</job-name>|<?xml|\t|\r|\n|"
                              "\r\n|\xEF\xBF\xBE|\xEF\xBF\xBF|\xF0\x9F\x98\x80|\xF0\x90\x8D\x88|"
                              "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D|\xD9\x85\xD8\xB1\xD8\xAD\xD8\xA8\xD8\xA7|"
                              "e\xCC\x81|\xE2\x80\x8F|\xE2\x80\xAE|\xC3|\x80|\xED\xA0\x80|\xED\xBF\xBF|"
                              "\xF4\x90\x80\x80|\xC0\xAF|\xFF|word| |Job 12|\xE2\x82\xAC");
        for (std::string p; std::getline(in, p, '|');)
            out.push_back(p);
        return out;
    }();
    // Where a cut may fall: multi-byte characters and what becomes an entity.
    static const std::string straddlers[] = {"\xF0\x9F\x98\x80", "\xE2\x82\xAC", "\xD7\xA9", "&", "\"", "\r", "<"};
    std::string s;
    const int kind = pick(0, 99);
    if (kind < 3) { // around every line buffer limit
        for (const int target = pick(900, 1100); static_cast<int>(s.size()) < target;)
            s += pick(0, 15) == 0 ? straddlers[pick(0, 6)] : std::string("a");
    } else if (kind < 8) { // every C0 control
        for (int c = 0; c < 0x20; ++c)
            s += std::string(1, static_cast<char>(c)) + "x";
    } else {
        for (int k = pick(0, 12); k > 0; --k)
            s += pick(0, 9) == 0 ? std::string(1, static_cast<char>(pick(0, 255)))
                                 : pieces[static_cast<size_t>(pick(0, static_cast<int>(pieces.size()) - 1))];
    }
    return s;
}

// data/hostile-ticket.plist with `s` at each "@": every user-text field of the writer.
pl::DictPtr hostileTicket(const std::string& s, bool formUse)
{
    static const pl::DictPtr ticket =
        pl::as<pl::Dictionary>(pl::readPlistFile(tpiftest::dataPath("hostile-ticket.plist")));
    auto t = pl::deepCopy(ticket);
    std::function<void(const pl::ValuePtr&)> fill = [&](const pl::ValuePtr& v) {
        if (auto d = pl::as<pl::Dictionary>(v))
            for (const auto& [k, item] : *d)
                fill(item);
        else if (auto text = pl::as<pl::String>(v); text && text->text == "@")
            text->text = s;
    };
    fill(t);
    t->getDict("com.talmo.print.BackgroundFormsOptions")->setInt("UseExistingForm", formUse ? 2 : 1);
    return t;
}

struct Field {
    const char* element;
    size_t room;             // SIZE_MAX: never cut
    bool customName = false; // an empty name is written as "other"
};

std::vector<Field> fields(bool formUse)
{
    // Element and indent of every user-text field; the notes are never cut.
    // clang-format off
    const std::pair<const char*, int> named[] = {
        {"job-name", 2}, {"requesting-user-name", 2}, {"job-recipient-name", 2}, {"media-description", 3},
        {"media-key", 3}, {"finishing-template", 3}, {"save-name", 5}, {"trc-name", 3},
        {"undefined-source-rgb-images", 2}, {"undefined-source-rgb-text", 2}, {"undefined-source-rgb-graphics", 2},
        {"undefined-source-cmyk-images", 2}, {"undefined-source-cmyk-text", 2}, {"undefined-source-cmyk-graphics", 2},
        {"undefined-source-gray-images", 2}, {"undefined-source-gray-text", 2}, {"undefined-source-gray-graphics", 2},
        {"color-destination-profile-front", 2}, {"color-destination-profile-back", 2}, {"job-accounting-user-id", 2},
        {formUse ? "form-name" : "form-save-name", formUse ? 4 : 5},
    };
    std::vector<Field> f = {
        {"job-message-to-operator", SIZE_MAX}, {"job-sheet-message", SIZE_MAX}, {"job-accounting-data", SIZE_MAX},
        {"media-type", nameRoom("\t\t\t", "media-type"), true}, {"media-color", nameRoom("\t\t\t", "media-color"), true},
        {"save-location", roomFor("\t\t\t\t\t<save-location syntax=\"uri\">", "</save-location>\n")},
        {"job-account-id", roomFor("\t\t<job-account-id syntax=\"name\" xml:space=\"preserve\">", "</job-accounting-id>\n")},
    };
    // clang-format on
    for (const auto& [element, tabs] : named)
        f.push_back({element, nameRoom(std::string(tabs, '\t'), element)});
    return f;
}

void collect(xmlNodePtr n, std::map<std::string, std::vector<std::string>>& out)
{
    for (; n; n = n->next) {
        if (n->type != XML_ELEMENT_NODE)
            continue;
        auto it = out.find(reinterpret_cast<const char*>(n->name));
        if (it != out.end()) {
            xmlChar* content = xmlNodeGetContent(n);
            it->second.push_back(content ? reinterpret_cast<const char*>(content) : "");
            xmlFree(content);
        } else {
            collect(n->children, out);
        }
    }
}

// The accounting element closes with a tag that does not match its opening one, as the
// printers expect; no parser reads that, so that exact closing tag is mended before parsing.
std::string mendAccounting(std::string doc)
{
    const std::string bad = "</job-accounting-id>\n", good = "</job-account-id>\n";
    for (size_t p = doc.find(bad); p != std::string::npos; p = doc.find(bad, p + good.size()))
        doc.replace(p, bad.size(), good);
    return doc;
}

void countError(void* ctx, const char*, ...) { ++*static_cast<int*>(ctx); }

// The parsed document, null when libxml2 reports any error.
TPIFDocument parse(const std::string& text)
{
    int errors = 0;
    xmlSetGenericErrorFunc(&errors, countError);
    TPIFDocument doc(xmlReadMemory(text.data(), static_cast<int>(text.size()), "tpif.xml", nullptr, XML_PARSE_NONET));
    xmlSetGenericErrorFunc(nullptr, nullptr);
    return errors ? nullptr : std::move(doc);
}

int countElements(xmlNodePtr n)
{
    int count = 0;
    for (; n; n = n->next)
        if (n->type == XML_ELEMENT_NODE)
            count += 1 + countElements(n->children);
    return count;
}

#if defined(__SANITIZE_ADDRESS__)
constexpr int kHostileStrings = 5000; // the sanitizer build runs a twentieth of the strings
#else
constexpr int kHostileStrings = 100000;
#endif

TEST(TPifHostileText, NeverChangesTheStructure)
{
    tpiftest::DiagCapture quiet;
    int baseline[2];
    for (int form = 0; form < 2; ++form) {
        auto plain = parse(mendAccounting(tpiftest::render(hostileTicket("plain", form))));
        ASSERT_TRUE(plain);
        baseline[form] = countElements(xmlDocGetRootElement(plain.get()));
    }
    const std::vector<Field> formFields[2] = {fields(false), fields(true)};
    std::mt19937 rng(20261122);
    int failures = 0;
    for (int i = 0; i < kHostileStrings && failures < 5; ++i) {
        const std::string s = hostile(rng);
        const bool formUse = i % 2;
        auto parsed = parse(mendAccounting(tpiftest::render(hostileTicket(s, formUse))));
        std::string wrong;
        if (!parsed || countElements(xmlDocGetRootElement(parsed.get())) != baseline[formUse]) {
            wrong = "broke the document";
        } else {
            std::map<std::string, std::vector<std::string>> values;
            for (const auto& f : formFields[formUse])
                values[f.element];
            collect(xmlDocGetRootElement(parsed.get()), values);
            const auto kept = keptCodePoints(s);
            for (const auto& f : formFields[formUse]) {
                const std::string expected = f.customName && kept.empty() ? "other" : readBack(kept, f.room);
                const auto& got = values[f.element];
                if (got.empty() || std::count(got.begin(), got.end(), expected) != std::ssize(got)) {
                    wrong = std::string("reads back wrongly from <") + f.element + ">, expected " +
                            ::testing::PrintToString(expected);
                    break;
                }
            }
        }
        if (!wrong.empty()) {
            ADD_FAILURE() << "string " << i << " " << wrong << ": " << ::testing::PrintToString(s);
            ++failures;
        }
    }
}

} // namespace
