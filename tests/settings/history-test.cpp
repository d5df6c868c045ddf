// The input history update rule and its file.
#include "tests/settings/prefs-fixture.h"

namespace talmo {
namespace {

using Strings = std::vector<std::string>;

TEST(InputHistoryRule, NewTextGoesFirstWithinTheLimitKnownOrEmptyTextChangesNothing)
{
    const struct {
        Strings before;
        const char* text;
        int32_t limit;
        bool changed;
        Strings after;
    } cases[] = {
        {{"e5", "e4", "e3", "e2", "e1"}, "e6", 5, true, {"e6", "e5", "e4", "e3", "e2"}},
        {{"a", "b", "c", "d"}, "new", 2, true, {"new", "a"}}, // cuts an already longer history
        {{"a", "b"}, "c", 0, true, {"c", "a", "b"}},          // 0 or less: no limit
        {{"a", "b"}, "c", -3, true, {"c", "a", "b"}},
        {{"a", "b"}, "", 5, false, {"a", "b"}},
        {{"a", "b"}, "b", 5, false, {"a", "b"}}, // a known text is not moved to the front either
    };
    for (const auto& c : cases) {
        pl::DictPtr prefs = pl::makeDict();
        pl::ArrayPtr array = pl::makeArray();
        for (const std::string& e : c.before)
            array->append(pl::makeString(e));
        prefs->set("Field", array);
        EXPECT_EQ(UpdateInputHistory(*prefs, "Field", c.text, c.limit), c.changed) << c.text << " " << c.limit;
        Strings after;
        for (const pl::ValuePtr& v : *prefs->getArray("Field"))
            after.push_back(pl::as<pl::String>(v)->text);
        EXPECT_EQ(after, c.after) << c.text << " " << c.limit;
    }
}

class InputHistoryFile : public test::PrefsHome { };

TEST_F(InputHistoryFile, AddWritesNewestFirstPerFieldAndOnlyWhenSomethingChanged)
{
    storeHistory("A", {pl::makeString("a1"), pl::makeInt(1), pl::makeDict(), pl::makeString("a2")});
    EXPECT_EQ(AddToInputHistory("B", "first", 5), HistoryWrite::Written);
    EXPECT_EQ(AddToInputHistory("B", "second", 5), HistoryWrite::Written);
    EXPECT_EQ(ReadInputHistory("B"), (Strings{"second", "first"}));
    EXPECT_EQ(ReadInputHistory("A"), (Strings{"a1", "a2"})); // what is no string is skipped
    EXPECT_TRUE(ReadInputHistory("C").empty());

    const std::string file = prefsFile(kInputHistoryFile);
    const std::string before = readAll(file);
    const auto stamp = std::filesystem::last_write_time(file);
    EXPECT_EQ(AddToInputHistory("B", "first", 5), HistoryWrite::Unchanged);
    EXPECT_EQ(AddToInputHistory("B", "", 5), HistoryWrite::Unchanged);
    EXPECT_EQ(readAll(file), before);
    EXPECT_EQ(std::filesystem::last_write_time(file), stamp);

    // A damaged entry is started afresh; the other fields stay.
    pl::DictPtr prefs = CopyUserPreferences(kInputHistoryFile);
    prefs->setInt("A", 3);
    ASSERT_TRUE(WriteUserPreferences(kInputHistoryFile, prefs));
    EXPECT_EQ(AddToInputHistory("A", "x", 5), HistoryWrite::Written);
    EXPECT_EQ(ReadInputHistory("A"), (Strings{"x"}));
    EXPECT_EQ(ReadInputHistory("B"), (Strings{"second", "first"}));
}

} // namespace
} // namespace talmo
