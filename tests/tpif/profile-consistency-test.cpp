// The shipped device profile against what the writer writes: every keyword and name of the
// reviewed transcripts and golden documents, and the numbers of tickets at the ends of the
// records' ranges, must be accepted by a feature that imports the element
// (data/profile-elements.txt): a keyword whose "TPIFValue" is the text, a number within
// "Minimum".."Maximum", a name within "Length".
#include "tpif-test-util.h"

#include "device/device.h"

#include <map>
#include <regex>
#include <vector>

using namespace talmo;

namespace {

class ProfileConsistency : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(TDPInitializeFromFile(std::string(TALMO_SOURCE_DIR) + "/resources/Device Profile.plist"));
        std::istringstream in(tpiftest::readFile(tpiftest::dataPath("profile-elements.txt")));
        for (std::string line; std::getline(in, line);) {
            std::istringstream words(line);
            std::string element, feature;
            if (line.empty() || line[0] == '#' || !(words >> element))
                continue;
            auto& ids = table_[element];
            while (words >> feature)
                if (feature != "-")
                    ids.push_back(feature);
        }
    }

    // Why the import refuses `text` of `syntax` for the feature, or "" when it takes it: the node
    // is validated exactly as an imported one (keyword by "TPIFValue", number within the range,
    // name within "Length" and "CharacterSet").
    static std::string refusal(const std::string& id, const std::string& syntax, const std::string& text)
    {
        auto feature = TDPGetFeature(id);
        auto importable = pl::as<pl::Boolean>(feature ? TDPGetFeatureProperty(feature, "TPIF") : nullptr);
        if (!importable || !importable->value)
            return id + " is not an importable feature";
        const std::string doc = "<tpif><v syntax=\"" + syntax + "\">" + text + "</v></tpif>";
        TPIFDocument d = TPIFReadDocumentFromMemory(doc.data(), doc.size());
        xmlNodePtr node = d ? xmlDocGetRootElement(d.get())->children : nullptr;
        const std::string_view kind = node ? TPIFImportGetNodeSyntax(node) : kTPIFSyntaxUnknown;
        if (!node || !TDPGetFeatureSyntax(feature, kind) || !TPIFImportNodeValue(node, kind, feature))
            return id + " refuses it";
        return "";
    }

    // Checks every leaf element of `text`, a document or a transcript (whose "==" lines start a
    // new case); `numbers` false skips integers, which the transcripts sweep beyond what any
    // record holds.
    void check(const std::string& text, const std::string& what, bool numbers)
    {
        static const std::regex open(R"re(^\t*<([\w-]+) syntax="(collection|1setOf|rangeOfInteger|resolution)">$)re");
        static const std::regex close(R"re(^\t*</([\w-]+)>$)re");
        static const std::regex leaf(R"re(<([\w-]+) syntax="(\w+)"(?: xml:space="preserve")?>([^<]*)</[\w-]+>)re");
        std::vector<std::string> stack;
        std::string crossFeed;
        std::istringstream in(text);
        for (std::string line; std::getline(in, line);) {
            std::smatch m;
            if (line.rfind("==", 0) == 0)
                stack.clear();
            else if (std::regex_match(line, m, open))
                stack.push_back(m[1]);
            else if (std::regex_match(line, m, close) && !stack.empty())
                stack.pop_back();
            for (auto it = std::sregex_iterator(line.begin(), line.end(), leaf); it != std::sregex_iterator(); ++it) {
                const std::string name = (*it)[1], syntax = (*it)[2], value = (*it)[3];
                const std::string parent = stack.empty() ? "" : stack.back();
                if (parent == "printer-resolution") { // the pair is one keyword
                    if (name == "cross-feed")
                        crossFeed = value;
                    else if (name == "feed-direction") {
                        EXPECT_EQ(refusal("Resolution", "keyword", crossFeed + "x" + value), "") << what;
                    }
                    continue;
                }
                const std::string grand = stack.size() > 1 ? stack[stack.size() - 2] + "." : "";
                auto row = table_.find(name + ":" + syntax);
                if (row == table_.end())
                    row = table_.find(grand + parent + "." + name);
                if (row == table_.end())
                    row = table_.find(parent + "." + name);
                if (row == table_.end())
                    row = table_.find(name);
                if (row == table_.end()) {
                    ADD_FAILURE() << what << ": <" << parent << "." << name << "> is neither imported nor listed";
                    continue;
                }
                if (row->second.empty() || (syntax == "integer" && !numbers))
                    continue;
                std::string why;
                for (const auto& id : row->second)
                    if ((why = refusal(id, syntax, value)).empty())
                        break;
                EXPECT_EQ(why, "") << what << ": <" << name << " syntax=\"" << syntax << "\">" << value;
                ++checked_;
            }
        }
    }

    std::map<std::string, std::vector<std::string>> table_;
    int checked_ = 0;
};

TEST_F(ProfileConsistency, KeywordsAndNamesOfEverythingTheWriterWrites)
{
    for (const char* file : {"writer-elements.golden", "writer-features.golden", "tpif-plain-job.tpif",
                             "tpif-special-pages.tpif", "tpif-finishing-colour.tpif", "tpif-saved-job-form.tpif"})
        check(tpiftest::readFile(tpiftest::dataPath(file)), file, false);
    EXPECT_GT(checked_, 1000);
}

TEST_F(ProfileConsistency, NumbersAndNamesAtTheEndsOfTheRecordsRanges)
{
    std::istringstream rows(tpiftest::readFile(tpiftest::dataPath("profile-extremes.txt")));
    for (std::string row; std::getline(rows, row);) {
        if (row.empty() || row[0] == '#')
            continue;
        auto ticket = tpiftest::plistDict(
            "<key>com.talmo.print.TPIFOptions</key><dict><key>TPIFOptionAll</key><true/></dict>" + row);
        check(tpiftest::render(ticket), row.substr(0, 80), true);
    }
    EXPECT_GT(checked_, 40);
}

} // namespace
