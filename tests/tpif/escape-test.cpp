// User texts can never change the document's structure: the escaping policy, the cut at a line
// buffer's end, and a seeded run of hostile strings through every user-text field, re-parsed
// with libxml2.
#include "tpif-test-util.h"

#include <map>
#include <random>

using namespace talmo;

namespace {

TEST(TPifEscape, Policy)
{
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"plain", "plain"},
        {"a & b", "a &amp; b"},
        {"<tag attr=\"v\">", "&lt;tag attr=&quot;v&quot;&gt;"},
        {"]]>", "]]&gt;"},
        {"it's", "it's"},
        {"tab\tlf\ncr\r", "tab\tlf\ncr&#xD;"},
        {std::string("nul\0x", 5), "nulx"},
        {"\x01\x02\x08\x0B\x0C\x0E\x1F\x7F", "\x7F"},
        {"\xEF\xBF\xBE\xEF\xBF\xBF|", "|"},           // U+FFFE, U+FFFF
        {"\xED\xA0\x80\xED\xBF\xBF|", "|"},           // surrogates
        {"\xC3(\x80\xF4\x90\x80\x80\xC0\xAF|", "(|"}, // truncated, stray, too large, overlong
        {"\xF0\x9F\x98\x80 \xD7\xA9\xD7\x9C e\xCC\x81", "\xF0\x9F\x98\x80 \xD7\xA9\xD7\x9C e\xCC\x81"},
        {"&amp;", "&amp;amp;"},
    };
    for (const auto& [in, out] : cases)
        EXPECT_EQ(XMLCreateStringByEscapingEntities(in), out) << in;
}

TEST(TPifEscape, FitNeverSplitsACharacterOrAnEntity)
{
    struct Case {
        std::string text;
        size_t room;
        size_t expected;
    };
    const std::vector<Case> cases = {
        {"abc", 3, 3},
        {"abc", 10, 3},
        {"abc", 2, 2},
        {"a&amp;b", 1, 1},
        {"a&amp;b", 5, 1},
        {"a&amp;b", 6, 6},
        {"a&#xD;", 5, 1},
        {"a\xF0\x9F\x98\x80", 4, 1},
        {"a\xF0\x9F\x98\x80", 5, 5},
        {"\xD7\xA9\xD7\x9C", 3, 2},
        {"\xE2\x82\xAC", 2, 0},
        {"", 0, 0},
        {"x", 0, 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(TPifFitEscapedText(c.text, c.room), c.expected) << c.text << " in " << c.room;
}

// --- an independent model of the sanitised form ---

// Code points of `s` as the policy keeps them: strict UTF-8, a malformed byte dropped alone.
std::vector<uint32_t> keptCodePoints(const std::string& s)
{
    std::vector<uint32_t> out;
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
        i += len;
        const bool allowed = cp == 9 || cp == 10 || cp == 13 || (cp >= 0x20 && cp != 0xFFFE && cp != 0xFFFF);
        if (allowed)
            out.push_back(cp);
    }
    return out;
}

void appendUtf8(std::string& o, uint32_t cp)
{
    if (cp < 0x80) {
        o += static_cast<char>(cp);
    } else if (cp < 0x800) {
        o += static_cast<char>(0xC0 | (cp >> 6));
        o += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        o += static_cast<char>(0xE0 | (cp >> 12));
        o += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        o += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        o += static_cast<char>(0xF0 | (cp >> 18));
        o += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        o += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        o += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

// Bytes a code point takes once escaped.
size_t escapedSize(uint32_t cp)
{
    switch (cp) {
    case '&':
        return 5; // &amp;
    case '<':
    case '>':
        return 4; // &lt; &gt;
    case '"':
        return 6; // &quot;
    case '\r':
        return 5; // &#xD;
    default:
        return cp < 0x80 ? 1 : cp < 0x800 ? 2 : cp < 0x10000 ? 3 : 4;
    }
}

// What a parser reads back: the kept text, cut (when `room` is given) to the longest prefix
// whose escaped form fits the room.
std::string readBack(const std::vector<uint32_t>& cps, size_t room = SIZE_MAX)
{
    std::string out;
    out.reserve(cps.size() * 2);
    size_t used = 0;
    for (uint32_t cp : cps) {
        used += escapedSize(cp);
        if (used > room)
            break;
        appendUtf8(out, cp);
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

class Hostile {
public:
    explicit Hostile(uint32_t seed) : rng_(seed) { }

    std::string next()
    {
        // Pieces separated by '|', none of which contains one.
        static const std::vector<std::string> pieces = [] {
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
        std::string s;
        const int kind = std::uniform_int_distribution<int>(0, 99)(rng_);
        if (kind < 3) {
            // Around every line buffer limit, with a multi-byte character or an entity where
            // the cut may fall.
            const size_t target = std::uniform_int_distribution<size_t>(900, 1100)(rng_);
            static const std::vector<std::string> straddlers = {
                "\xF0\x9F\x98\x80", "\xE2\x82\xAC", "\xD7\xA9", "&", "\"", "\r", "<"};
            while (s.size() < target) {
                if (std::uniform_int_distribution<int>(0, 15)(rng_) == 0)
                    s += straddlers[std::uniform_int_distribution<size_t>(0, straddlers.size() - 1)(rng_)];
                else
                    s += 'a';
            }
        } else if (kind < 8) {
            // Every C0 control.
            for (int c = 0; c < 0x20; ++c) {
                s += static_cast<char>(c);
                s += 'x';
            }
        } else {
            const int n = std::uniform_int_distribution<int>(0, 12)(rng_);
            for (int k = 0; k < n; ++k) {
                if (std::uniform_int_distribution<int>(0, 9)(rng_) == 0)
                    s += static_cast<char>(std::uniform_int_distribution<int>(0, 255)(rng_));
                else
                    s += pieces[std::uniform_int_distribution<size_t>(0, pieces.size() - 1)(rng_)];
            }
        }
        return s;
    }

private:
    std::mt19937 rng_;
};

// A ticket with `s` in every user-text field.
pl::DictPtr hostileTicket(const std::string& s, bool formUse)
{
    auto t = pl::makeDict();
    auto options = pl::makeDict();
    options->setBool("TPIFOptionAll", true);
    t->set("com.talmo.print.TPIFOptions", options);
    t->setString("com.talmo.print.JobNotesJobName", s);
    t->setString("com.talmo.print.JobNotesSenderName", s);
    t->setString("com.talmo.print.JobNotesMessage", s);
    t->setString("com.talmo.print.JobNotesRecipient", s);
    t->setString("com.talmo.print.JobNotesSheetMessage", s);
    t->setString("com.talmo.print.JobNotesAdditionalInfo", s);
    auto stock = pl::makeDict();
    stock->setInt("Type", 7);
    stock->setString("CustomType", s);
    stock->setInt("Color", 10);
    stock->setString("CustomColor", s);
    stock->setString("Description", s);
    t->set("com.talmo.print.JobLevelStock", stock);
    auto cover = pl::makeDict();
    auto named = pl::makeDict();
    named->setBool("CustomNameOnly", true);
    named->setString("CustomName", s);
    cover->set("Stock", named);
    t->set("com.talmo.print.SpecialPages.FrontCover", cover);
    t->setInt("com.talmo.print.FinishingOptions", 22);
    t->setString("com.talmo.print.FinishingCustom", s);
    auto job = pl::makeDict();
    job->setInt("JobType", 3);
    job->setString("SavedJobName", s);
    job->setString("SavedJobLocation", s);
    t->set("com.talmo.print.JobType", job);
    auto color = pl::makeDict();
    for (const char* k :
         {"FCTRC", "RGBImagesProfile", "RGBTextAndGraphicsProfile", "CMYKImagesProfile", "CMYKTextAndGraphicsProfile",
          "GrayImagesProfile", "GrayTextAndGraphicsProfile", "DestinationProfile"})
        color->setString(k, s);
    t->set("com.talmo.print.FullColorOptions", color);
    auto forms = pl::makeDict();
    forms->setInt("UseExistingForm", formUse ? 2 : 1);
    forms->setInt("UseDocumentName", 0);
    forms->setString("MergeWithString", s);
    forms->setString("NewFormString", s);
    t->set("com.talmo.print.BackgroundFormsOptions", forms);
    t->setInt("com.talmo.Act.tpif.On", 1);
    t->setString("com.talmo.Act.tpif.UID", s);
    t->setString("com.talmo.Act.tpif.AID", s);
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
    // clang-format on
    std::vector<Field> f = {
        {"job-message-to-operator", SIZE_MAX},
        {"job-sheet-message", SIZE_MAX},
        {"job-accounting-data", SIZE_MAX},
        {"media-type", nameRoom("\t\t\t", "media-type"), true},
        {"media-color", nameRoom("\t\t\t", "media-color"), true},
        {"save-location", roomFor("\t\t\t\t\t<save-location syntax=\"uri\">", "</save-location>\n")},
        {"job-account-id",
         roomFor("\t\t<job-account-id syntax=\"name\" xml:space=\"preserve\">", "</job-accounting-id>\n")},
    };
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

std::string render(const pl::DictPtr& ticket)
{
    tpiftest::StringSink s;
    WriteTPIFToSink(s.get(), ticket);
    return s.text;
}

#if defined(__SANITIZE_ADDRESS__)
constexpr int kHostileStrings = 5000; // the sanitizer build runs a twentieth of the strings
#else
constexpr int kHostileStrings = 100000;
#endif

TEST(TPifHostileText, NeverChangesTheStructure)
{
    FILE* devnull = std::fopen("/dev/null", "w");
    ASSERT_TRUE(devnull);
    tpif_errfp = devnull;
    int baseline[2];
    for (int form = 0; form < 2; ++form) {
        tpiftest::ParsedDoc plain;
        tpiftest::parse(tpiftest::mendAccounting(render(hostileTicket("plain", form))), plain);
        ASSERT_EQ(plain.errors, 0);
        baseline[form] = tpiftest::countElements(xmlDocGetRootElement(plain.doc));
    }
    const std::vector<Field> formFields[2] = {fields(false), fields(true)};

    Hostile gen(20261122);
    int failures = 0;
    for (int i = 0; i < kHostileStrings && failures < 5; ++i) {
        const std::string s = gen.next();
        const bool formUse = i % 2;
        const std::string doc = render(hostileTicket(s, formUse));
        tpiftest::ParsedDoc parsed;
        tpiftest::parse(tpiftest::mendAccounting(doc), parsed);
        if (parsed.errors != 0 || !parsed.doc) {
            ADD_FAILURE() << "string " << i << " broke the document: " << ::testing::PrintToString(s);
            ++failures;
            continue;
        }
        const int elements = tpiftest::countElements(xmlDocGetRootElement(parsed.doc));
        if (elements != baseline[formUse]) {
            ADD_FAILURE() << "string " << i << " changed the element count: " << ::testing::PrintToString(s);
            ++failures;
            continue;
        }
        std::map<std::string, std::vector<std::string>> values;
        for (const auto& f : formFields[formUse])
            values[f.element];
        collect(xmlDocGetRootElement(parsed.doc), values);
        const auto kept = keptCodePoints(s);
        std::map<size_t, std::string> expectedByRoom;
        for (const auto& f : formFields[formUse]) {
            auto cached = expectedByRoom.find(f.room);
            if (cached == expectedByRoom.end())
                cached = expectedByRoom.emplace(f.room, readBack(kept, f.room)).first;
            std::string expected = cached->second;
            if (f.customName && kept.empty())
                expected = "other";
            const auto& got = values[f.element];
            if (got.empty() ||
                std::any_of(got.begin(), got.end(), [&](const std::string& v) { return v != expected; })) {
                ADD_FAILURE() << "string " << i << " reads back wrongly from <" << f.element
                              << ">: " << ::testing::PrintToString(s) << " got "
                              << ::testing::PrintToString(got.empty() ? std::string("<missing>") : got.front())
                              << " expected " << ::testing::PrintToString(expected);
                ++failures;
                break;
            }
        }
    }
    tpif_errfp = nullptr;
    std::fclose(devnull);
}

TEST(TPifHostileText, LinesNeverExceedTheBuffer)
{
    // A name far longer than any buffer: every line of the document stays within it and keeps
    // its closing tag.
    const std::string s(5000, 'n');
    tpiftest::DiagCapture quiet;
    const std::string doc = render(hostileTicket(s + "&" + s, false));
    size_t start = 0;
    while (start < doc.size()) {
        size_t end = doc.find('\n', start);
        end = end == std::string::npos ? doc.size() : end + 1;
        const std::string line = doc.substr(start, end - start);
        const bool note = line.find("job-message-to-operator") != std::string::npos ||
                          line.find("job-sheet-message") != std::string::npos ||
                          line.find("job-accounting-data") != std::string::npos;
        if (!note) {
            EXPECT_LT(line.size(), kTPifLineBufferSize) << line.substr(0, 80);
        }
        start = end;
    }
    EXPECT_NE(doc.find("\t\t<job-name syntax=\"name\" xml:space=\"preserve\">" +
                       std::string(nameRoom("\t\t", "job-name"), 'n') + "</job-name>\n"),
              std::string::npos);
    EXPECT_NE(doc.find(s + "&amp;" + s + "</job-message-to-operator>\n"), std::string::npos) << "notes are never cut";
}

} // namespace
