#include "ticket/ticket.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>

using namespace talmo;
namespace fs = std::filesystem;

namespace {

// Points every preferences location at fresh temporary folders, so no test touches a real
// home and each starts without history.
class BackgroundFormsTest : public testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/talmo-bgforms-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        root_ = pattern;
        for (const char* v : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_DATA_DIRS"}) {
            const char* old = std::getenv(v);
            saved_.emplace_back(v, old ? std::optional<std::string>(old) : std::nullopt);
        }
        setenv("XDG_CONFIG_HOME", (root_ / "config").c_str(), 1);
        setenv("XDG_DATA_HOME", (root_ / "data").c_str(), 1);
        setenv("XDG_DATA_DIRS", (root_ / "shipped").c_str(), 1);
    }
    void TearDown() override
    {
        for (const auto& [name, value] : saved_) {
            if (value)
                setenv(name.c_str(), value->c_str(), 1);
            else
                unsetenv(name.c_str());
        }
        std::error_code ec;
        fs::remove_all(root_, ec);
    }

    fs::path userFile() const { return root_ / "config" / "talmo" / kBackgroundFormsFile; }
    fs::path shippedFeatures() const { return root_ / "shipped" / "talmo" / kTalmoFeaturesFile; }

    static void writeFile(const fs::path& p, const std::string& text)
    {
        fs::create_directories(p.parent_path());
        std::ofstream(p, std::ios::binary) << text;
    }
    static pl::ArrayPtr strings(std::initializer_list<const char*> items)
    {
        auto a = pl::makeArray();
        for (const char* s : items)
            a->append(pl::makeString(s));
        return a;
    }
    static pl::DictPtr history(const pl::ArrayPtr& existing, const pl::ArrayPtr& created)
    {
        auto d = pl::makeDict();
        if (existing)
            d->set("ExistingFormsArray", existing);
        if (created)
            d->set("NewFormsArray", created);
        return d;
    }
    pl::DictPtr readUserFile() const { return pl::as<pl::Dictionary>(pl::readPlistFile(userFile())); }

    static std::pair<pl::ArrayPtr, pl::ArrayPtr> arraysOf(const BackgroundFormsOptions& o)
    {
        pl::ArrayPtr existing, created;
        EXPECT_EQ(o.existingFormsArray(&existing), noErr);
        EXPECT_EQ(o.newFormsArray(&created), noErr);
        return {existing, created};
    }

    fs::path root_;
    std::vector<std::pair<std::string, std::optional<std::string>>> saved_;
};

std::vector<std::string> keysOf(const pl::DictPtr& d)
{
    std::vector<std::string> keys;
    for (const auto& [k, v] : *d)
        keys.push_back(k);
    return keys;
}

TEST_F(BackgroundFormsTest, FormNamesAreWrittenByTheirRules)
{
    BackgroundFormsOptions o;
    ASSERT_EQ(o.setMergeWithString("Letterhead"), noErr);
    ASSERT_EQ(o.setNewFormString("Invoice"), noErr);
    auto d = o.asTicket();
    EXPECT_FALSE(d->contains("MergeWithString")); // a new form is being made
    EXPECT_EQ(d->getString("NewFormString"), "Invoice");
    EXPECT_EQ(keysOf(d).back(), "NewFormString");

    ASSERT_EQ(o.setUseExistingForm(2), noErr);
    d = o.asTicket();
    EXPECT_EQ(keysOf(d)[1], "MergeWithString");
    EXPECT_EQ(d->getString("MergeWithString"), "Letterhead");
    EXPECT_FALSE(d->contains("ExistingFormsArray"));
}

TEST_F(BackgroundFormsTest, CyclePagesCheckedOnlyTakesRepeatPages)
{
    struct Case {
        int32_t value;
        bool unchecked;
        OSStatus expected;
    } cases[] = {
        {1, false, paramErr},         {1, true, noErr},       {0, true, noErr},
        {0, false, paramErr},         {2, false, noErr},      {999999, false, noErr},
        {1000000, false, paramErr},   {1000000, true, noErr}, {-5, false, paramErr},
        {INT32_MIN, false, paramErr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.value << (c.unchecked ? " unchecked" : " checked"));
        BackgroundFormsOptions o;
        ASSERT_EQ(o.setCyclePages(77, false), noErr);
        EXPECT_EQ(o.setCyclePages(c.value, c.unchecked), c.expected);
        int32_t v = 0;
        ASSERT_EQ(o.cyclePages(&v), noErr);
        EXPECT_EQ(v, c.expected == noErr ? c.value : 77);
    }
}

TEST_F(BackgroundFormsTest, ApplyPagesRowsSetCyclePages)
{
    struct Case {
        int32_t row, fromPage;
        OSStatus expected;
        int32_t applyPagesFrom, cyclePages;
    } cases[] = {
        {1, 0, noErr, 1, 1},     {2, 500, noErr, 2, 0},         {3, 2, noErr, 3, 2},     {3, 999999, noErr, 3, 999999},
        {3, 1, paramErr, 3, 77}, {3, 1000000, paramErr, 3, 77}, {4, 5, paramErr, 3, 77}, {0, 5, paramErr, 3, 77},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "row " << c.row << " from " << c.fromPage);
        BackgroundFormsOptions o;
        o.setApplyPagesFrom(3);
        o.setCyclePages(77, false);
        EXPECT_EQ(ApplyBackgroundFormsPages(o, c.row, c.fromPage), c.expected);
        int32_t apply = 0, cycle = 0;
        o.applyPagesFrom(&apply);
        o.cyclePages(&cycle);
        EXPECT_EQ(apply, c.applyPagesFrom);
        EXPECT_EQ(cycle, c.cyclePages);
    }
    EXPECT_EQ(BackgroundFormsRepeatSpinValue(0), 2);
    EXPECT_EQ(BackgroundFormsRepeatSpinValue(1), 2);
    EXPECT_EQ(BackgroundFormsRepeatSpinValue(INT32_MIN), 2);
    EXPECT_EQ(BackgroundFormsRepeatSpinValue(40), 40);
}

TEST_F(BackgroundFormsTest, FromTicketResetsEveryFieldTheDictionaryLacks)
{
    BackgroundFormsOptions o;
    o.setUseExistingForm(2);
    o.setCyclePages(500, false);
    o.setXOffset(120);
    o.setYOffset(-30);
    o.setUseDocumentName(0);
    o.setApplyPagesFrom(3);
    o.setMergeWithString("Old");
    o.setNewFormString("Older");

    o.fromTicket(nullptr); // nothing changes
    int32_t v = 0;
    o.cyclePages(&v);
    EXPECT_EQ(v, 500);

    auto d = pl::makeDict();
    d->setInt("Inches", 0);
    o.fromTicket(d);
    BackgroundFormsOptions expected;
    expected.setInches(0);
    EXPECT_EQ(o, expected);
}

TEST_F(BackgroundFormsTest, RoundTripAndWrongTypedValues)
{
    BackgroundFormsOptions o;
    o.setUseExistingForm(2);
    o.setCyclePages(0, true);
    o.setInches(0);
    o.setXOffset(-4880);
    o.setYOffset(3300);
    o.setUseDocumentName(0);
    o.setApplyPagesFrom(2);
    o.setMergeWithString("Form \xC3\xA9");
    o.setNewFormString("New");
    EXPECT_EQ(BackgroundFormsOptions(pl::as<pl::Dictionary>(pl::readPlist(pl::writePlist(o.asTicket())))), o);

    auto bad = pl::makeDict();
    bad->setString("UseExistingForm", "2");
    bad->setReal("CyclePages", 3.5);
    bad->setBool("Inches", false);
    bad->setInt("X1", int64_t(1) << 40);
    bad->set("Y1", pl::makeDict());
    bad->setInt("NewFormString", 4);
    bad->set("MergeWithString", pl::makeArray());
    EXPECT_EQ(BackgroundFormsOptions(bad), BackgroundFormsOptions());
}

TEST_F(BackgroundFormsTest, HistoryFallsBackToTheFeatureFile)
{
    // No file anywhere: both arrays empty.
    {
        auto [existing, created] = arraysOf(BackgroundFormsOptions());
        ASSERT_TRUE(existing && created);
        EXPECT_TRUE(existing->empty());
        EXPECT_TRUE(created->empty());
    }
    fs::remove(userFile()); // the record above saved its (empty) history

    // A feature file without the arrays changes nothing.
    auto features = pl::makeDict();
    features->setString("Other", "x");
    writeFile(shippedFeatures(), pl::writePlist(features));
    {
        auto [existing, created] = arraysOf(BackgroundFormsOptions());
        EXPECT_TRUE(existing->empty());
        EXPECT_TRUE(created->empty());
    }
    fs::remove(userFile());

    // Its arrays are used while the user has no history; entries that are not strings go.
    auto shippedExisting = strings({"Shipped A", "Shipped B"});
    shippedExisting->append(pl::makeInt(7));
    writeFile(shippedFeatures(), pl::writePlist(history(shippedExisting, strings({"Shipped New"}))));
    {
        auto [existing, created] = arraysOf(BackgroundFormsOptions());
        EXPECT_TRUE(pl::equal(existing, strings({"Shipped A", "Shipped B"})));
        EXPECT_TRUE(pl::equal(created, strings({"Shipped New"})));
    }

    // Once the user file holds history, it wins; a missing array there starts empty.
    writeFile(userFile(), pl::writePlist(history(strings({"Mine"}), nullptr)));
    {
        auto [existing, created] = arraysOf(BackgroundFormsOptions());
        EXPECT_TRUE(pl::equal(existing, strings({"Mine"})));
        EXPECT_TRUE(created->empty());
    }

    // A damaged user file holds no history: back to the shipped defaults.
    writeFile(userFile(), "<plist><dict><key>broken");
    {
        auto [existing, created] = arraysOf(BackgroundFormsOptions());
        EXPECT_TRUE(pl::equal(existing, strings({"Shipped A", "Shipped B"})));
    }
}

TEST_F(BackgroundFormsTest, DestroyingARecordSavesItsHistoryKeepingOtherEntries)
{
    auto prefs = history(strings({"A"}), strings({"N"}));
    prefs->setString("Unrelated", "kept");
    writeFile(userFile(), pl::writePlist(prefs));
    {
        BackgroundFormsOptions o;
        auto [existing, created] = arraysOf(o);
        existing->insert(0, pl::makeString("B")); // the dialogs add names in place
        o.setNewFormsArray(strings({"N2"}));
        EXPECT_TRUE(pl::equal(readUserFile()->get("ExistingFormsArray"), strings({"A"}))); // not yet
    }
    auto saved = readUserFile();
    ASSERT_TRUE(saved);
    EXPECT_TRUE(pl::equal(saved->get("ExistingFormsArray"), strings({"B", "A"})));
    EXPECT_TRUE(pl::equal(saved->get("NewFormsArray"), strings({"N2"})));
    EXPECT_EQ(saved->getString("Unrelated"), "kept");

    // fromTicket reloads what was saved.
    BackgroundFormsOptions r(pl::makeDict());
    EXPECT_TRUE(pl::equal(arraysOf(r).first, strings({"B", "A"})));
}

TEST_F(BackgroundFormsTest, ANullDictionaryRecordNeverWipesTheHistory)
{
    writeFile(userFile(), pl::writePlist(history(strings({"Keep"}), strings({"Me"}))));
    {
        BackgroundFormsOptions o{pl::DictPtr()};
    }
    EXPECT_TRUE(pl::equal(readUserFile()->get("ExistingFormsArray"), strings({"Keep"})));
    EXPECT_TRUE(pl::equal(readUserFile()->get("NewFormsArray"), strings({"Me"})));
}

TEST_F(BackgroundFormsTest, CopiesOwnTheirHistory)
{
    BackgroundFormsOptions a;
    BackgroundFormsOptions b(a);
    arraysOf(b).first->append(pl::makeString("only b"));
    EXPECT_TRUE(arraysOf(a).first->empty());
    a = b;
    arraysOf(a).first->append(pl::makeString("only a"));
    EXPECT_EQ(arraysOf(b).first->size(), 1u);
    EXPECT_EQ(arraysOf(a).first->size(), 2u);
}

} // namespace
