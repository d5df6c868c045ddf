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

TEST(InputHistoryRule, NewTextGoesFirstWithinTheLimitKnownOrEmptyTextChangesNothing)
{
    using V = std::vector<std::string>;
    const struct {
        std::initializer_list<const char*> before;
        const char* text;
        int32_t limit;
        bool changed;
        V after;
    } cases[] = {
        {{"e5", "e4", "e3", "e2", "e1"}, "e6", 5, true, {"e6", "e5", "e4", "e3", "e2"}},
        {{"a", "b", "c", "d"}, "new", 2, true, {"new", "a"}}, // cuts an already longer history
        {{"a", "b"}, "c", 0, true, {"c", "a", "b"}},          // 0 or less: no limit
        {{"a", "b"}, "c", -3, true, {"c", "a", "b"}},
        {{"a", "b"}, "", 5, false, {"a", "b"}},
        {{"a", "b"}, "b", 5, false, {"a", "b"}}, // a known text is not moved to the front either
    };
    for (const auto& c : cases) {
        pl::DictPtr prefs = WithHistory(c.before);
        EXPECT_EQ(UpdateInputHistory(*prefs, "Field", c.text, c.limit), c.changed) << c.text << " " << c.limit;
        EXPECT_EQ(Strings(prefs->getArray("Field")), c.after) << c.text << " " << c.limit;
    }
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
