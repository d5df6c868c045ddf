// The input history update rule and its file.
#include "settings-fixture.h"

#include <fstream>
#include <sstream>

namespace talmo {
namespace {

using test::SettingsHome;

std::vector<std::string> Strings(const pl::ArrayPtr& array)
{
    std::vector<std::string> out;
    if (array)
        for (const pl::ValuePtr& v : *array)
            out.push_back(pl::as<pl::String>(v) ? pl::as<pl::String>(v)->text : std::string("<non-string>"));
    return out;
}

pl::DictPtr WithHistory(std::initializer_list<const char*> entries)
{
    pl::DictPtr prefs = pl::makeDict();
    pl::ArrayPtr array = pl::makeArray();
    for (const char* e : entries)
        array->append(pl::makeString(e));
    prefs->set("Field", array);
    return prefs;
}

TEST(InputHistoryRule, NewTextGoesFirstAndTheLimitDropsTheOldest)
{
    pl::DictPtr prefs = WithHistory({"e5", "e4", "e3", "e2", "e1"});
    EXPECT_TRUE(UpdateInputHistory(*prefs, "Field", "e6", 5));
    EXPECT_EQ(Strings(prefs->getArray("Field")), (std::vector<std::string>{"e6", "e5", "e4", "e3", "e2"}));
}

TEST(InputHistoryRule, LimitCutsAnAlreadyLongerHistory)
{
    pl::DictPtr prefs = WithHistory({"a", "b", "c", "d"});
    EXPECT_TRUE(UpdateInputHistory(*prefs, "Field", "new", 2));
    EXPECT_EQ(Strings(prefs->getArray("Field")), (std::vector<std::string>{"new", "a"}));
}

TEST(InputHistoryRule, ZeroOrNegativeLimitKeepsEverything)
{
    for (int32_t limit : {0, -3}) {
        pl::DictPtr prefs = WithHistory({"a", "b", "c"});
        EXPECT_TRUE(UpdateInputHistory(*prefs, "Field", "d", limit));
        EXPECT_EQ(Strings(prefs->getArray("Field")).size(), 4u) << limit;
    }
}

TEST(InputHistoryRule, EmptyOrKnownTextChangesNothing)
{
    pl::DictPtr prefs = WithHistory({"a", "b"});
    EXPECT_FALSE(UpdateInputHistory(*prefs, "Field", "", 5));
    EXPECT_FALSE(UpdateInputHistory(*prefs, "Field", "b", 5));
    // A known text is not moved to the front either.
    EXPECT_EQ(Strings(prefs->getArray("Field")), (std::vector<std::string>{"a", "b"}));
}

TEST(InputHistoryRule, MissingOrDamagedEntryStartsAFreshArray)
{
    pl::DictPtr prefs = pl::makeDict();
    prefs->setString("Other", "kept");
    prefs->setInt("Field", 3);
    EXPECT_TRUE(UpdateInputHistory(*prefs, "Field", "x", 5));
    EXPECT_EQ(Strings(prefs->getArray("Field")), (std::vector<std::string>{"x"}));
    EXPECT_EQ(prefs->getString("Other"), "kept");

    EXPECT_TRUE(UpdateInputHistory(*prefs, "Second", "y", 0));
    EXPECT_EQ(Strings(prefs->getArray("Second")), (std::vector<std::string>{"y"}));
}

class InputHistoryFile : public SettingsHome {
protected:
    std::string fileText() const
    {
        std::ifstream in(historyFile(), std::ios::binary);
        std::stringstream s;
        s << in.rdbuf();
        return s.str();
    }
};

TEST_F(InputHistoryFile, AddWritesTheFileAndReadGivesNewestFirst)
{
    EXPECT_EQ(AddToInputHistory("Field", "first", 5), HistoryWrite::Written);
    EXPECT_EQ(AddToInputHistory("Field", "second", 5), HistoryWrite::Written);
    EXPECT_EQ(ReadInputHistory("Field"), (std::vector<std::string>{"second", "first"}));
    EXPECT_TRUE(ReadInputHistory("OtherField").empty());
}

TEST_F(InputHistoryFile, KnownTextLeavesTheFileUntouched)
{
    ASSERT_EQ(AddToInputHistory("Field", "first", 5), HistoryWrite::Written);
    std::string before = fileText();
    std::filesystem::file_time_type stamp = std::filesystem::last_write_time(historyFile());
    EXPECT_EQ(AddToInputHistory("Field", "first", 5), HistoryWrite::Unchanged);
    EXPECT_EQ(AddToInputHistory("Field", "", 5), HistoryWrite::Unchanged);
    EXPECT_EQ(fileText(), before);
    EXPECT_EQ(std::filesystem::last_write_time(historyFile()), stamp);
}

TEST_F(InputHistoryFile, FieldsKeepTheirOwnHistories)
{
    StoreHistory("A", {pl::makeString("a1")});
    EXPECT_EQ(AddToInputHistory("B", "b1", 5), HistoryWrite::Written);
    EXPECT_EQ(ReadInputHistory("A"), (std::vector<std::string>{"a1"}));
    EXPECT_EQ(ReadInputHistory("B"), (std::vector<std::string>{"b1"}));
}

TEST_F(InputHistoryFile, NonStringEntriesAreSkippedOnRead)
{
    StoreHistory("Field", {pl::makeString("a"), pl::makeInt(1), pl::makeDict(), pl::makeString("b")});
    EXPECT_EQ(ReadInputHistory("Field"), (std::vector<std::string>{"a", "b"}));
}

} // namespace
} // namespace talmo
