// The Paper/Output panel's rules without widgets: the finishing summary, the menu marks, the
// booklet rules, the destination menu and the multiple finishing pairs.
#include "panels/paperoutput/paperoutput-finishing.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>

using namespace talmo;
using namespace talmo::paperoutput;

namespace {

std::string bracketed(std::string_view key) { return "[" + std::string(key) + "]"; }

PaperOutputSettings parse(const std::string& fields)
{
    const std::map<std::string, int32_t PaperOutputSettings::*> members = {
        {"finishing", &PaperOutputSettings::finishingOption},
        {"staple1", &PaperOutputSettings::staple1},
        {"staple2", &PaperOutputSettings::staple2},
        {"center", &PaperOutputSettings::stapleCenter},
        {"fold", &PaperOutputSettings::fold},
        {"bind", &PaperOutputSettings::bind},
        {"punch", &PaperOutputSettings::holePunch},
        {"zfold", &PaperOutputSettings::zFold},
        {"offset", &PaperOutputSettings::offset},
        {"slip", &PaperOutputSettings::slipSheet},
        {"booklet", &PaperOutputSettings::bookletLayout}};
    PaperOutputSettings s;
    std::istringstream in(fields);
    for (std::string field; in >> field;) {
        const auto eq = field.find('=');
        const std::string name = field.substr(0, eq), value = field.substr(eq + 1);
        if (name == "custom") {
            s.custom = value;
            std::replace(s.custom->begin(), s.custom->end(), '_', ' ');
        } else {
            s.*members.at(name) = std::stoi(value);
        }
    }
    return s;
}

TEST(PaperOutputFinishing, SummaryOfEveryOptionAndSubValue)
{
    std::ifstream data(TALMO_SOURCE_DIR "/tests/panels/data/finishing-summary.txt");
    ASSERT_TRUE(data);
    int cases = 0;
    for (std::string line; std::getline(data, line);) {
        if (line.empty() || line[0] == '#')
            continue;
        const auto arrow = line.find(" => ");
        ASSERT_NE(arrow, std::string::npos) << line;
        std::string expected = line.substr(arrow + 4);
        std::replace(expected.begin(), expected.end(), '|', '\n');
        EXPECT_EQ(CreateFinishingString(parse(line.substr(0, arrow)), bracketed), expected) << line;
        ++cases;
    }
    EXPECT_GT(cases, 70);
}

TEST(PaperOutputFinishing, MenuMarksFollowTheChoice)
{
    const uint32_t commands[] = {
        kCmdPrinterDefault, kCmdNone,       kCmdSignatureBooklet, kCmdOneStaple, kCmdTwoStaples,
        kCmdCenterStaple,   kCmdBind,       kCmdCustom,           kCmdZFold,     kCmdFold,
        kCmdHolePunch2,     kCmdHolePunch3, kCmdHolePunch4,       kCmdMultiple,  kCmdBookletCreation,
        kCmdSlipSheet,      kCmdOffset};
    struct {
        const char* settings;
        std::vector<uint32_t> checked;
    } const rows[] = {
        {"", {kCmdPrinterDefault}},
        {"finishing=40 fold=44 slip=2", {kCmdFold, kCmdSlipSheet}},
        {"finishing=18 fold=19 offset=1", {kCmdFold}},
        {"finishing=50 offset=2", {kCmdMultiple, kCmdOffset}},
        {"finishing=52", {kCmdMultiple}},
        {"finishing=24 booklet=1", {kCmdBookletCreation}},
        {"finishing=36 slip=1", {kCmdZFold}},
        {"finishing=2", {}},
    };
    for (const auto& row : rows) {
        const PaperOutputSettings s = parse(row.settings);
        for (uint32_t command : commands) {
            const bool expected = std::find(row.checked.begin(), row.checked.end(), command) != row.checked.end();
            EXPECT_EQ(FinishingCommandChecked(s, command), expected) << row.settings << " " << command;
        }
    }
    // Hole counts are stored 3, 4, 5 for two, three and four holes.
    PaperOutputSettings punch = parse("finishing=30 punch=32");
    for (int32_t holes : {3, 4, 5}) {
        punch.holePunchOptions = holes;
        EXPECT_EQ(FinishingCommandChecked(punch, kCmdHolePunch2), holes == 3);
        EXPECT_EQ(FinishingCommandChecked(punch, kCmdHolePunch4), holes == 5);
    }
}

TEST(PaperOutputFinishing, ABookletExcludingChoiceDropsTheBookletAndItsFold)
{
    PaperOutputSettings s = parse("finishing=24 fold=43 booklet=1");
    s.duplex = 3;
    UnselectBooklet(s);
    EXPECT_EQ(s.finishingOption, kFinishingPrinterDefault);
    EXPECT_EQ(s.fold, 1);
    EXPECT_EQ(s.bookletLayout, kBookletOff);
    EXPECT_EQ(s.duplex, 2);

    // A centre staple goes with a booklet; a corner staple does not.
    s = parse("finishing=24 fold=53 booklet=1");
    ChooseFinishing(s, kFinishingCenterStaple);
    EXPECT_TRUE(s.bookletOn());
    EXPECT_EQ(s.fold, 53);
    ChooseFinishing(s, kFinishingOneStaple);
    EXPECT_EQ(s.option(), kFinishingOneStaple);
    EXPECT_FALSE(s.bookletOn());
    // Without a booklet, two-sided stays as chosen.
    s = parse("finishing=1 booklet=2");
    s.duplex = 1;
    ChooseFinishing(s, kFinishingHolePunch);
    EXPECT_EQ(s.duplex, 1);
}

TEST(PaperOutputFinishing, DestinationMenuWithAndWithoutTheInserter)
{
    std::map<std::string, int32_t, std::less<>> installed;
    std::string finisher;
    const InstalledOptionsSource printer{[&](std::string_view f) { return installed.count(f) > 0; },
                                         [&](std::string_view f) { return installed.find(f)->second; },
                                         [](std::string_view f) { return "plugin:" + std::string(f); },
                                         [&](std::string_view) { return finisher; }};
    auto labels = [&] {
        std::string text;
        for (const MenuEntry& e : BuildOutputDestinationMenu(printer, bracketed))
            text += e.label + "=" + std::to_string(e.value) + " ";
        return text;
    };
    const std::string head = "[Printer Default]=-2147483648 [Auto]=1 ";
    EXPECT_EQ(labels(), head);
    installed = {
        {"AutoSwitchTrayKey", 18}, {"StackerTray1Key", 17}, {"StackerTray2Key", 15}, {"SimpleCatchTrayKey", 2}};
    EXPECT_EQ(labels(), head + "plugin:AutoSwitchTrayKey=18 plugin:StackerTray1Key=17 plugin:StackerTray2Key=15 "
                               "plugin:SimpleCatchTrayKey=2 ");
    installed["OmbraInserter"] = 1;
    const std::string trays =
        "plugin:AutoSwitchTrayKey=18 [Finisher B: Main Stacker]=17 [Finisher C: Main Stacker]=15 ";
    for (auto [choice, top] : {std::pair{"BFMBFM", "C"}, {"BFMBFMFTM", "D"}, {"HCS", "B"}, {"", "B"}}) {
        finisher = choice;
        EXPECT_EQ(labels(), head + trays + "[Finisher " + top + ": Top Tray]=2 ") << choice;
    }
}

TEST(PaperOutputFinishing, SetupIsOfferedForItsJobTypesOnly)
{
    for (int32_t type = -1; type <= 10; ++type)
        EXPECT_EQ(JobTypeHasSetup(type), type >= 3 && type != 8 && type <= 9) << type;
}

TEST(PaperOutputFinishing, MultipleFinishingPairsFollowThePrimaryEdge)
{
    FinishingPairing staple(FinishingPairing::Staple);
    EXPECT_EQ(staple.value(), 5);
    staple.selectEdge(2); // (5, 7): 5 stays
    EXPECT_EQ(staple.value(), 5);
    staple.selectEdge(3); // (7, 8): 5 is gone, the first is taken
    EXPECT_EQ(staple.value(), 7);
    staple.selectEdge(4); // (6, 8)
    EXPECT_EQ(staple.value(), 6);
    EXPECT_STREQ(staple.pair().labels[1], "Portrait - Bottom Right or Landscape - Bottom Left");
    staple.selectValue(8); // first edge holding 8 is 3
    EXPECT_EQ(staple.edge(), 3);
    staple.selectValue(7); // edge 2 holds 7 before edge 3
    EXPECT_EQ(staple.edge(), 2);
    staple.selectValue(10); // no edge: the first, with its first value
    EXPECT_EQ(std::pair(staple.edge(), staple.value()), std::pair(1, 5));

    FinishingPairing punch(FinishingPairing::HolePunch);
    punch.selectEdge(4);
    EXPECT_EQ(punch.pair().values, (std::array<int32_t, 2>{35, 34}));
    EXPECT_EQ(punch.value(), 35);
    punch.selectValue(34);
    EXPECT_EQ(std::pair(punch.edge(), punch.value()), std::pair(2, 34));
    punch.selectEdge(3); // (33, 34): 34 stays
    EXPECT_EQ(punch.value(), 34);
    EXPECT_EQ(std::vector<bool>({ZFoldAvailable(1), ZFoldAvailable(2), ZFoldAvailable(3), ZFoldAvailable(4)}),
              std::vector<bool>({true, false, true, false}));
}

} // namespace
