// The named paper library: validation against the printer's maps, the list's rules, the menu
// order, the repair of a paper taken for use, and the file they share.
#include "paperlib/paperlib.h"
#include "paperlib-fixture.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

namespace talmo::test {
namespace {

// --- validation ---

struct ValidationCase {
    const char* what;
    int32_t startStatus;
    std::function<void(Stock&)> edit;
    int32_t expected;
};

TEST(StockLibraryValidation, StatusFollowsThePrinterMaps)
{
    const std::vector<ValidationCase> cases = {
        {"offered paper keeps plain", 0, [](Stock&) {}, 0},
        {"64 gsm accepted", 0, [](Stock& s) { s.setWeight(64); }, 0},
        {"300 gsm accepted", 0, [](Stock& s) { s.setWeight(300); }, 0},
        {"63 gsm refused", 0, [](Stock& s) { s.setWeight(63); }, 2},
        {"301 gsm refused", 1, [](Stock& s) { s.setWeight(301); }, 2},
        {"unknown colour", 0, [](Stock& s) { s.setColor(99); }, 2},
        {"envelope is not on the type menu", 0, [](Stock& s) { s.setType(8); }, 2},
        {"punched 3", 0, [](Stock& s) { s.setPunched(3); }, 2},
        {"finish 4 not offered", 0, [](Stock& s) { s.setFinish(4); }, 2},
        {"finish set and offered", 0, [](Stock& s) { s.setFinish(1); }, 3},
        {"grain set and offered", 1, [](Stock& s) { s.setGrain(2); }, 3},
        {"values win over attributes", 0, [](Stock& s) { s.setGrain(2), s.setColor(99); }, 2},
    };
    for (const auto& c : cases) {
        StockLibrary e;
        Stock s = NamedPaper("Paper");
        c.edit(s);
        e.setStock(s);
        e.setStatus(c.startStatus);
        e.validateStockEntry();
        EXPECT_EQ(e.status(), c.expected) << c.what;
    }
}

TEST(StockLibraryEntry, DictionaryFormAndRebuild)
{
    StockLibrary e = Entry(NamedPaper("Bond"), "");
    pl::DictPtr d = e.asTicket();
    ASSERT_TRUE(d);
    EXPECT_EQ(d->getInt(kStockEntryStatusKey), 0);
    EXPECT_TRUE(d->getDict(kStockEntryStockKey));
    EXPECT_FALSE(d->get(kStockEntryUUIDKey)) << "empty uuid is left out";
    EXPECT_FALSE(d->get(kStockEntryNameKey)) << "empty name is left out";

    e.setUUID("6F1F2E44-0000-4000-8000-000000000001");
    e.setName("Shelf 3");
    e.setStatus(1);
    const StockLibrary back(e.asTicket());
    EXPECT_EQ(back.uuid(), e.uuid());
    EXPECT_EQ(back.name(), "Shelf 3");
    EXPECT_EQ(back.status(), 1);
    EXPECT_TRUE(back.stock() == e.stock());

    // An unreadable status keeps the default; the rebuild validates at once.
    d = e.asTicket();
    d->setString(kStockEntryStatusKey, "one");
    Stock heavy = NamedPaper("Card", 350);
    d->set(kStockEntryStockKey, heavy.asTicket());
    EXPECT_EQ(StockLibrary(d).status(), kStockEntryUnsupportedValues);
    d->set(kStockEntryStockKey, NamedPaper("Card").asTicket());
    EXPECT_EQ(StockLibrary(d).status(), kStockEntryPlain);
}

TEST(StockLibraryEntry, CopiesAreNeverCounted)
{
    StockLibrary e = Entry(NamedPaper("Bond"), "n");
    e.setReferenceCount(4);
    const StockLibrary copy(e);
    EXPECT_EQ(copy.referenceCount(), 0);
    StockLibrary assigned;
    assigned.setReferenceCount(2);
    assigned = e;
    EXPECT_EQ(assigned.referenceCount(), 0);
    EXPECT_EQ(assigned.name(), "n");
}

// --- the list ---

using StockLibraryListTest = LibraryHome;

TEST_F(StockLibraryListTest, AddGivesANewUuidAndWritesAtOnce)
{
    std::string a, b;
    {
        StockLibraryList list;
        StockLibrary e = Entry(NamedPaper("Bond"));
        a = list.add(&e);
        b = list.add(&e);
        EXPECT_EQ(e.uuid(), b);
        EXPECT_NE(a, b);
        ASSERT_TRUE(Uuid::fromString(a));
        EXPECT_EQ(Uuid::fromString(a)->toString(), a) << "canonical upper-case form";
        // Written before the list goes away.
        const pl::DictPtr file = libraryDict();
        ASSERT_TRUE(file);
        const pl::DictPtr stored = file->getDict(kStockLibraryStockListKey);
        ASSERT_TRUE(stored);
        EXPECT_EQ(stored->size(), 2u);
        EXPECT_EQ(stored->getDict(a)->getString(kStockEntryUUIDKey), a);
    }
    StockLibraryList again;
    EXPECT_EQ(again.stockList()->size(), 2u);
}

TEST_F(StockLibraryListTest, DuplicatesIgnoreCaseAndNeedAName)
{
    StockLibraryList list;
    StockLibrary bond = Entry(NamedPaper("Bond"));
    list.add(&bond);
    StockLibrary unnamed = Entry(NamedPaper(""));
    list.add(&unnamed);
    StockLibrary ecru = Entry(NamedPaper("Écru Straße"));
    list.add(&ecru);
    for (const auto& [name, dup] : {std::pair<std::optional<std::string>, bool>{"BOND", true},
                                    {"écru strasse", true},
                                    {"Bonds", false},
                                    {std::nullopt, false},
                                    {"", false}})
        EXPECT_EQ(list.isDuplicate(name), dup) << name.value_or("null") << ": papers without a name never match";
}

TEST_F(StockLibraryListTest, ReplaceKeepsTheEntryAndTakesThePaper)
{
    StockLibraryList list;
    StockLibrary first = Entry(NamedPaper("Bond"), "shelf");
    const std::string key = list.add(&first);
    list.setInUse(key);
    StockLibrary other = Entry(NamedPaper("Other"));
    list.add(&other);

    StockLibrary incoming = Entry(NamedPaper("BOND", 120), "ignored");
    list.replace(&incoming);
    ASSERT_EQ(list.stockList()->size(), 2u);
    const StockLibrary stored(list.stockList()->getDict(key));
    EXPECT_EQ(stored.stock().weight(), 120);
    EXPECT_EQ(stored.uuid(), key);
    EXPECT_EQ(stored.name(), "shelf");
    EXPECT_EQ(stored.status(), kStockEntryInUse);

    StockLibrary stranger = Entry(NamedPaper("Nobody"));
    list.replace(&stranger);
    EXPECT_EQ(list.stockList()->size(), 2u) << "no entry of that name: nothing stored";
    const auto file = libraryDict()->getDict(kStockLibraryStockListKey);
    EXPECT_EQ(StockLibrary(file->getDict(key)).stock().weight(), 120) << "replacement written";
}

TEST_F(StockLibraryListTest, FindMatchStatusMarksAndRemove)
{
    StockLibraryList list;
    StockLibrary a = Entry(NamedPaper("A")), b = Entry(NamedPaper("B"));
    const std::string ka = list.add(&a), kb = list.add(&b);
    EXPECT_EQ(list.findMatch(NamedPaper("b")), kb) << "stock equality ignores the name's case";
    EXPECT_EQ(list.findMatch(NamedPaper("B", 120)), std::nullopt);

    auto stored = [&](const std::string& k) {
        return StockLibrary(libraryDict()->getDict(kStockLibraryStockListKey)->getDict(k)).status();
    };
    list.setInUse(kb);
    EXPECT_EQ(stored(kb), kStockEntryInUse);
    list.setNotInUse(kb);
    EXPECT_EQ(stored(kb), kStockEntryPlain);
    list.setInUse("not-a-key");
    list.remove(ka);
    list.remove("absent");
    EXPECT_EQ(list.stockList()->size(), 1u);
    EXPECT_EQ(libraryDict()->getDict(kStockLibraryStockListKey)->size(), 1u);
}

TEST_F(StockLibraryListTest, ClearStatusKeepsOnlyUnsupportedValues)
{
    StockLibraryList list;
    Stock finished = NamedPaper("Finished");
    finished.setFinish(1);
    StockLibrary f = Entry(finished);
    StockLibrary heavy = Entry(NamedPaper("Heavy", 400));
    StockLibrary used = Entry(NamedPaper("Used"));
    heavy.validateStockEntry(); // stored with its mark, as the dialog stores a checked paper
    const std::string kf = list.add(&f), kh = list.add(&heavy), ku = list.add(&used);
    list.setInUse(ku);

    EXPECT_EQ(StockLibrary(list.stockList()->getDict(kf)).status(), kStockEntryUnsupportedAttributes);
    list.clearStatus();
    auto storedStatus = [&](const std::string& k) {
        return *list.stockList()->getDict(k)->getInt(kStockEntryStatusKey);
    };
    EXPECT_EQ(storedStatus(kf), kStockEntryPlain) << "stored as 0";
    EXPECT_EQ(StockLibrary(list.stockList()->getDict(kf)).status(), kStockEntryUnsupportedAttributes)
        << "rebuilt, the mark comes back";
    EXPECT_EQ(storedStatus(kh), kStockEntryUnsupportedValues);
    EXPECT_EQ(storedStatus(ku), kStockEntryPlain);
}

TEST_F(StockLibraryListTest, MarkStockStatusMarksWhatTheJobUses)
{
    StockLibraryList list;
    StockLibrary job = Entry(NamedPaper("Job")), cover = Entry(NamedPaper("Cover")), idle = Entry(NamedPaper("Idle"));
    Stock plain = NamedPaper("");
    StockLibrary unnamed = Entry(plain);
    const std::string kj = list.add(&job), kc = list.add(&cover), ki = list.add(&idle), kn = list.add(&unnamed);
    list.setInUse(ki); // stale mark from an earlier dialog

    const Stock jobStock = NamedPaper("job");
    const Stock coverStock = NamedPaper("Cover");
    const Stock* pages[] = {nullptr, &plain, &coverStock};
    markStockStatus(list, &jobStock, pages);
    auto status = [&](const std::string& k) { return *list.stockList()->getDict(k)->getInt(kStockEntryStatusKey); };
    EXPECT_EQ(status(kj), kStockEntryInUse);
    EXPECT_EQ(status(kc), kStockEntryInUse);
    EXPECT_EQ(status(ki), kStockEntryPlain) << "cleared first";
    EXPECT_EQ(status(kn), kStockEntryPlain) << "a paper without a name is never searched";
}

TEST_F(StockLibraryListTest, OnlyAnAttachedListWritesEvenWhatWasChangedInPlace)
{
    {
        StockLibraryList printer(true);
        printer.stockList()->set("P", Entry(NamedPaper("Printer paper")).asTicket());
    }
    EXPECT_FALSE(std::filesystem::exists(libraryFile()));
    {
        StockLibraryList list;
        list.stockList()->set("K", Entry(NamedPaper("Direct")).asTicket());
    }
    EXPECT_TRUE(libraryDict()->getDict(kStockLibraryStockListKey)->getDict("K"));
}

TEST_F(StockLibraryListTest, WritingKeepsTheFileOtherKeys)
{
    pl::DictPtr prefs = pl::makeDict();
    pl::DictPtr dialogPrefs = pl::makeDict();
    dialogPrefs->setString("DefaultList", "Printer Paper List");
    prefs->set(kStockLibraryPreferencesKey, dialogPrefs);
    prefs->setString(kStockLibrarySelectedRowKey, "ROW");
    ASSERT_TRUE(WriteUserPreferences(kStockLibraryDomain, prefs));
    {
        StockLibraryList list;
        StockLibrary e = Entry(NamedPaper("Bond"));
        list.add(&e);
        StockLibraryOrderList order;
        order.updateOrderList(std::string("X"));
    }
    const pl::DictPtr file = libraryDict();
    ASSERT_TRUE(file);
    EXPECT_EQ(file->getDict(kStockLibraryPreferencesKey)->getString("DefaultList"), "Printer Paper List");
    EXPECT_EQ(file->getString(kStockLibrarySelectedRowKey), "ROW");
    EXPECT_EQ(file->getDict(kStockLibraryStockListKey)->size(), 1u);
    EXPECT_EQ(file->getArray(kStockLibraryStockMenuListKey)->size(), 1u);
}

TEST_F(StockLibraryListTest, ShippedListIsTheStartWhenTheUserHasNoFile)
{
    writeRaw(shippedFile(), readAll(dataPath("shipped-library.plist")));
    const std::string shippedBytes = readAll(shippedFile());

    {
        StockLibraryList fromShipped;
        EXPECT_TRUE(fromShipped.stockList()->getDict("S1"));
        StockLibraryOrderList menu;
        ASSERT_EQ(menu.stockOrderList()->size(), 1u);
        const auto w = StoredColumnWidths();
        ASSERT_EQ(w.size(), 1u);
        EXPECT_EQ(w[0].column, kStockColumnName);
        EXPECT_EQ(w[0].width, 180);
    }
    EXPECT_EQ(readAll(shippedFile()), shippedBytes) << "nothing written back to the shipped file";

    // Once the user has a file, even one without a list, the shipped list is not consulted.
    pl::DictPtr user = pl::makeDict();
    user->setString(kStockLibrarySelectedRowKey, "R");
    ASSERT_TRUE(WriteUserPreferences(kStockLibraryDomain, user));
    StockLibraryList fromUser;
    EXPECT_EQ(fromUser.stockList()->size(), 0u);
}

TEST_F(StockLibraryListTest, DamagedFileGivesAFreshList)
{
    for (const auto& damaged : std::filesystem::directory_iterator(dataPath("damaged-library"))) {
        SCOPED_TRACE(damaged.path().filename().string());
        writeRaw(libraryFile(), readAll(damaged.path()));
        StockLibraryList list;
        StockLibraryOrderList order;
        EXPECT_EQ(order.stockOrderList()->size(), 0u);
        EXPECT_FALSE(list.isDuplicate(std::string("x")));
        EXPECT_EQ(list.findMatch(NamedPaper("x")), std::nullopt);
        list.clearStatus();
        StockLibrary e = Entry(NamedPaper("Fresh"));
        const std::string k = list.add(&e);
        EXPECT_TRUE(libraryDict()->getDict(kStockLibraryStockListKey)->getDict(k));
    }
}

// Two processes adding to the library at the same time: the file always parses, and it holds
// the complete list of one writer (the last one), never a mixture cut mid-write.
TEST_F(StockLibraryListTest, TwoWritersLastOneWinsNeverTorn)
{
    constexpr int kAdds = 40;
    pid_t children[2];
    for (int c = 0; c < 2; ++c) {
        children[c] = ::fork();
        ASSERT_GE(children[c], 0);
        if (children[c] == 0) {
            {
                StockLibraryList list(true); // its own view, then writes the whole file each time
                for (int i = 0; i < kAdds; ++i) {
                    StockLibrary e = Entry(NamedPaper("W" + std::to_string(c) + "-" + std::to_string(i)));
                    list.stockList()->set("W" + std::to_string(c) + "-" + std::to_string(i), e.asTicket());
                    pl::DictPtr prefs = CopyUserPreferences(kStockLibraryDomain);
                    prefs->set(kStockLibraryStockListKey, list.stockList());
                    if (!WriteUserPreferences(kStockLibraryDomain, prefs))
                        ::_exit(3);
                }
            }
            ::_exit(0);
        }
    }
    int reads = 0, torn = 0;
    for (bool running = true; running;) {
        running = false;
        for (pid_t p : children)
            if (::waitpid(p, nullptr, WNOHANG) == 0)
                running = true;
        if (std::filesystem::exists(libraryFile())) {
            ++reads;
            if (!libraryDict())
                ++torn;
        }
    }
    EXPECT_EQ(torn, 0) << "of " << reads << " reads";
    for (pid_t p : children) {
        int st = 0;
        ::waitpid(p, &st, 0);
    }
    const pl::DictPtr file = libraryDict();
    ASSERT_TRUE(file);
    const pl::DictPtr list = file->getDict(kStockLibraryStockListKey);
    ASSERT_TRUE(list);
    ASSERT_EQ(list->size(), size_t(kAdds)) << "one writer's whole list";
    const char prefix = list->begin()->first[1];
    for (const auto& [key, value] : *list)
        EXPECT_EQ(key[1], prefix) << "entries of both writers mixed";
}

// --- the menu order ---

using StockLibraryOrderListTest = LibraryHome;

// The first `n` keys of the menu order, blank-separated.
std::string head(const StockLibraryOrderList& order, size_t n)
{
    std::string out;
    for (size_t i = 0; i < n && i < order.stockOrderList()->size(); ++i)
        out += (i ? " " : "") + pl::as<pl::String>(order.stockOrderList()->at(i))->text;
    return out;
}

TEST_F(StockLibraryOrderListTest, KeepsTheLast25NewestFirstWithoutRepeats)
{
    {
        StockLibraryOrderList order;
        for (int i = 0; i < 30; ++i)
            order.updateOrderList("U" + std::to_string(i));
        order.updateOrderList(std::nullopt);
        ASSERT_EQ(order.stockOrderList()->size(), 25u);
        EXPECT_EQ(pl::as<pl::String>(order.stockOrderList()->at(24))->text, "U5");
        order.updateOrderList(std::string("U10"));
        ASSERT_EQ(order.stockOrderList()->size(), 25u) << "moved, not copied";
        EXPECT_EQ(head(order, 3), "U10 U29 U28");
        order.remove("U29");
    }
    StockLibraryOrderList again;
    EXPECT_EQ(again.stockOrderList()->size(), 24u);
    EXPECT_EQ(head(again, 2), "U10 U28");
}

TEST_F(StockLibraryOrderListTest, ReadKeepsOnlyTheStringsOfAHandEditedFile)
{
    writeRaw(libraryFile(), "<plist><dict><key>" + std::string(kStockLibraryStockMenuListKey) +
                                "</key><array><string>A</string><integer>4</integer><string>B</string></array>"
                                "</dict></plist>");
    StockLibraryOrderList order;
    EXPECT_EQ(head(order, 3), "A B");
    order.clearOrderList();
    EXPECT_EQ(order.stockOrderList()->size(), 0u);
}

// --- repair for use ---

TEST(ValidateAndFixStockEntry, ResetsWhatThePrinterLacks)
{
    Stock s = NamedPaper("Coated");
    s.setCustomNameOnly(true);
    s.setSidesCoated(9);
    s.setCoatingType(3);
    validateAndFixStockEntry(s);
    EXPECT_EQ(s.sidesCoated(), 9) << "the sides-coated value stays";
    EXPECT_EQ(s.coatingType(), kNotSet) << "the coating type goes";
    EXPECT_EQ(s.customName(), std::string());
    EXPECT_FALSE(s.customNameOnly());

    Stock t = NamedPaper("Mixed", 500);
    t.setColor(99);
    t.setPunched(7);
    t.setFinish(2);
    t.setGrain(5);
    validateAndFixStockEntry(t);
    EXPECT_EQ(t.color(), kNotSet);
    EXPECT_EQ(t.punched(), kNotSet);
    EXPECT_EQ(t.weight(), kNotSet);
    EXPECT_EQ(t.finish(), 2) << "offered and set stays";
    EXPECT_EQ(t.grain(), kNotSet);
    EXPECT_EQ(t.type(), 1);

    Stock ok = NamedPaper("Fine", 280);
    ok.setCustomNameOnly(true);
    const Stock before = ok;
    validateAndFixStockEntry(ok);
    EXPECT_TRUE(ok == before);
    EXPECT_EQ(ok.customName(), std::string("Fine"));
    EXPECT_TRUE(ok.customNameOnly());
}

// --- table layout ---

class FakeTable : public StockLibraryTable {
public:
    std::vector<StockColumnWidth> widths;
    std::optional<std::string> selected, revealed;
    std::vector<StockColumnWidth> columnWidths() const override { return widths; }
    void setColumnWidth(uint32_t column, int16_t width) override { widths.push_back({column, width}); }
    std::optional<std::string> selectedRow() const override { return selected; }
    void revealRow(const std::string& uuid) override { revealed = uuid; }
};

using StockLibraryTableTest = LibraryHome;

TEST_F(StockLibraryTableTest, ColumnWidthsAndSelectedRowRoundTrip)
{
    FakeTable shown;
    shown.widths = {{kStockColumnStatus, 24}, {kStockColumnName, 200}, {kStockColumnComment, -1}};
    ASSERT_TRUE(storeColumnWidths(shown));
    ASSERT_TRUE(storeSelectedRow("ROW-1"));
    const pl::DictPtr stored = libraryDict()->getDict(kStockLibraryColumnWidthsKey);
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->getInt("StAt"), 24);
    EXPECT_EQ(stored->getInt("NaMe"), 200);

    // Entries a table cannot take are skipped.
    pl::DictPtr prefs = CopyUserPreferences(kStockLibraryDomain);
    prefs->getDict(kStockLibraryColumnWidthsKey)->setInt("Wide", 70000);
    prefs->getDict(kStockLibraryColumnWidthsKey)->setInt("LONGER", 5);
    prefs->getDict(kStockLibraryColumnWidthsKey)->setString("TyPe", "80");
    ASSERT_TRUE(WriteUserPreferences(kStockLibraryDomain, prefs));

    FakeTable restored;
    setColumnWidths(restored);
    setSelectedRow(restored);
    ASSERT_EQ(restored.widths.size(), 3u);
    EXPECT_EQ(restored.widths[1].column, kStockColumnName);
    EXPECT_EQ(restored.widths[1].width, 200);
    EXPECT_EQ(restored.widths[2].width, -1);
    EXPECT_EQ(restored.revealed, "ROW-1");
}

} // namespace
} // namespace talmo::test
