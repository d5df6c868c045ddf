// The Paper/Output panel's rules that need no widgets.
#include "panels/paperoutput/paperoutput-finishing.h"
#include "toolkit/toolkit.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>

using namespace talmo;
using namespace talmo::paperoutput;

namespace {

std::string bracketed(std::string_view key) { return "[" + std::string(key) + "]"; }

// The settings read from a ticket holding the items "Name=value ...".
PaperOutputSettings parse(const std::string& items)
{
    Ticket ticket;
    std::istringstream in(items);
    for (std::string item; in >> item;) {
        const auto eq = item.find('=');
        std::string key = "com.talmo.print." + item.substr(0, eq), value = item.substr(eq + 1);
        std::replace(value.begin(), value.end(), '_', ' ');
        ticket.set(key,
                   key == kFinishingCustomKey ? pl::ValuePtr(pl::makeString(value))
                   : key == kBookletLayoutKey ? pl::ValuePtr(pl::makeBool(value == "1"))
                                              : pl::ValuePtr(pl::makeInt(std::stoll(value))),
                   "t");
    }
    return ReadPaperOutputSettings(&ticket);
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
        std::string expected = line.substr(arrow + 4);
        std::replace(expected.begin(), expected.end(), '|', '\n');
        EXPECT_EQ(CreateFinishingString(parse(line.substr(0, arrow)), bracketed), expected) << line;
        ++cases;
    }
    EXPECT_GT(cases, 70);
}

TEST(PaperOutputFinishing, MenuMarksFollowTheChoice)
{
    const std::pair<const char*, const char*> rows[] = {
        {"", "Pdef"},
        {"FinishingOptions=40 FinishingFoldValue=44 FinishingSlipSheet=2", "Fold Spsh"},
        {"FinishingOptions=50 FinishingOffset=2", "FMul Ofsb"},
        {"FinishingOptions=30 FinishingHolePunchOptions=4", "Hpn3"},
        {"FinishingOptions=24 BookletLayout=1", "Bkcr"},
        {"FinishingOptions=36 FinishingOffset=1", "Zfol"},
        {"FinishingOptions=2", ""},
    };
    for (const auto& [settings, expected] : rows) {
        std::string checked;
        for (const char* command : {"Pdef", "None", "FSBM", "Stp1", "Stp2", "CStp", "Bind", "Cust", "Zfol", "Fold",
                                    "Hpn2", "Hpn3", "Hpn4", "FMul", "Bkcr", "Spsh", "Ofsb"})
            if (FinishingCommandChecked(parse(settings), FourCCFromText(command)))
                checked += (checked.empty() ? "" : " ") + std::string(command);
        EXPECT_EQ(checked, expected) << settings;
    }
}

TEST(PaperOutputFinishing, ABookletExcludingChoiceDropsTheBookletAndItsFold)
{
    PaperOutputSettings s = parse("FinishingOptions=24 FinishingFoldValue=43 BookletLayout=1");
    s.duplex = 3;
    UnselectBooklet(s);
    EXPECT_EQ(std::tuple(s.finishingOption, s.fold, s.bookletLayout, s.duplex),
              std::tuple(kFinishingPrinterDefault, 1, kBookletOff, 2));
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

TEST(PaperOutputFinishing, MultipleFinishingPairsFollowThePrimaryEdge)
{
    // Steps "<e|v><n>=<edge>/<value>": select edge n or value n, then the edge and value expected.
    const std::pair<FinishingPairing::Kind, const char*> runs[] = {
        {FinishingPairing::Staple, "e1=1/5 e2=2/5 e3=3/7 e4=4/6 v8=3/8 v7=2/7 v10=1/5"},
        {FinishingPairing::HolePunch, "e4=4/35 v34=2/34 e3=3/34 e1=1/32"},
    };
    for (const auto& [kind, steps] : runs) {
        FinishingPairing pairing(kind);
        std::istringstream in(steps);
        for (std::string step; in >> step;) {
            char op = 0;
            int arg = 0, edge = 0, value = 0;
            ASSERT_EQ(std::sscanf(step.c_str(), "%c%d=%d/%d", &op, &arg, &edge, &value), 4) << step;
            op == 'e' ? pairing.selectEdge(arg) : pairing.selectValue(arg);
            EXPECT_EQ(std::pair(pairing.edge(), pairing.value()), std::pair(edge, value)) << step;
        }
    }
}

} // namespace
