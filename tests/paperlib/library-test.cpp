// The named paper library: validation against the printer's maps, the list's rules, the menu
// order, the repair of a paper taken for use, and the file they share.
#include "paperlib/paperlib.h"
#include "paperlib-fixture.h"

#include <gtest/gtest.h>

namespace talmo::test {
namespace {

TEST(StockLibraryValidation, StatusFollowsThePrinterMaps)
{
    const std::tuple<const char*, int32_t, std::function<void(Stock&)>, int32_t> cases[] = {
        {"offered paper keeps its status", 1, [](Stock&) {}, 1},
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
    for (const auto& [what, start, edit, expected] : cases) {
        Stock s = NamedPaper("Paper");
        edit(s);
        StockLibrary e = Entry(s);
        e.setStatus(start);
        e.validateStockEntry();
        EXPECT_EQ(e.status(), expected) << what;
    }
}

TEST(StockLibraryEntry, DictionaryFormAndCopies)
{
    StockLibrary e = Entry(NamedPaper("Bond"));
    e.setStatus(1);
    pl::DictPtr d = e.asTicket();
    EXPECT_FALSE(d->get(kStockEntryUUIDKey) || d->get(kStockEntryNameKey)) << "empty uuid and name are left out";
    d->setString(kStockEntryStatusKey, "one");
    EXPECT_EQ(StockLibrary(d).status(), kStockEntryPlain) << "an unreadable status keeps the default";
    e.setReferenceCount(4);
    StockLibrary assigned;
    assigned.setReferenceCount(2);
    assigned = e;
    EXPECT_EQ(std::pair(StockLibrary(e).referenceCount(), assigned.referenceCount()), std::pair(0, 0))
        << "a copy is never counted as referenced";
}

using StockLibraryListTest = LibraryHome;

TEST_F(StockLibraryListTest, AddDuplicatesReplaceAndTheFile)
{
    std::string bondKey, otherKey;
    {
        StockLibraryList list;
        StockLibrary bond = Entry(NamedPaper("Bond"), "shelf"), other = Entry(NamedPaper("Écru Straße"));
        bondKey = list.add(&bond);
        otherKey = list.add(&other);
        EXPECT_EQ(other.uuid(), otherKey);
        ASSERT_TRUE(Uuid::fromString(bondKey));
        EXPECT_EQ(Uuid::fromString(bondKey)->toString(), bondKey) << "canonical upper-case form";
        EXPECT_EQ(libraryDict()->getDict(kStockLibraryStockListKey)->size(), 2u) << "written at once";
        StockLibrary unnamed = Entry(NamedPaper(""));
        list.add(&unnamed);
        for (const auto& [name, dup] : {std::pair<std::optional<std::string>, bool>{"BOND", true},
                                        {"écru strasse", true},
                                        {"Bonds", false},
                                        {std::nullopt, false},
                                        {"", false}})
            EXPECT_EQ(list.isDuplicate(name), dup) << name.value_or("null") << ": papers without a name never match";

        list.setInUse(bondKey);
        StockLibrary incoming = Entry(NamedPaper("BOND", 120), "ignored"), stranger = Entry(NamedPaper("Nobody"));
        list.replace(&incoming);
        list.replace(&stranger);
        EXPECT_EQ(list.stockList()->size(), 3u) << "no entry of that name: nothing stored";
    }
    StockLibraryList again;
    const StockLibrary stored(again.stockList()->getDict(bondKey));
    EXPECT_EQ(std::tuple(stored.stock().weight(), stored.uuid(), stored.name(), stored.status()),
              std::tuple(120, bondKey, std::string("shelf"), kStockEntryInUse))
        << "the replacement keeps the entry and takes the paper";
}

TEST_F(StockLibraryListTest, MarksFollowWhatTheJobUses)
{
    StockLibraryList list;
    Stock finished = NamedPaper("Finished"), plain = NamedPaper("");
    finished.setFinish(1);
    StockLibrary job = Entry(NamedPaper("Job")), cover = Entry(NamedPaper("Cover")), idle = Entry(NamedPaper("Idle")),
                 heavy = Entry(NamedPaper("Heavy", 400)), fin = Entry(finished), unnamed = Entry(plain);
    heavy.validateStockEntry(); // stored with its mark, as the dialog stores a checked paper
    const std::string kj = list.add(&job), kc = list.add(&cover), ki = list.add(&idle), kh = list.add(&heavy),
                      kf = list.add(&fin), kn = list.add(&unnamed);
    EXPECT_EQ(list.findMatch(NamedPaper("cover")), kc) << "stock equality ignores the name's case";
    EXPECT_EQ(list.findMatch(NamedPaper("Cover", 120)), std::nullopt);
    list.setInUse(ki); // a stale mark from an earlier dialog
    list.setInUse("not-a-key");

    const Stock jobStock = NamedPaper("job"), coverStock = NamedPaper("Cover");
    const Stock* pages[] = {nullptr, &plain, &coverStock};
    markStockStatus(list, &jobStock, pages);
    auto stored = [&](const std::string& k) {
        return *libraryDict()->getDict(kStockLibraryStockListKey)->getDict(k)->getInt(kStockEntryStatusKey);
    };
    const std::pair<std::string, int32_t> expected[] = {{kj, kStockEntryInUse}, {kc, kStockEntryInUse},
                                                        {ki, kStockEntryPlain}, {kh, kStockEntryUnsupportedValues},
                                                        {kf, kStockEntryPlain}, {kn, kStockEntryPlain}};
    for (const auto& [key, status] : expected)
        EXPECT_EQ(stored(key), status) << StockLibrary(list.stockList()->getDict(key)).stock().customName().value();
    EXPECT_EQ(StockLibrary(list.stockList()->getDict(kf)).status(), kStockEntryUnsupportedAttributes)
        << "stored as 0, the attributes mark comes back when rebuilt";
    list.setNotInUse(kj);
    list.remove(kc);
    list.remove("absent");
    EXPECT_EQ(stored(kj), kStockEntryPlain);
    EXPECT_EQ(libraryDict()->getDict(kStockLibraryStockListKey)->size(), 5u);
}

TEST_F(StockLibraryListTest, WhatIsReadAndWhatIsWritten)
{
    writeRaw(shippedFile(), readAll(dataPath("shipped-library.plist")));
    const std::string shippedBytes = readAll(shippedFile());
    {
        StockLibraryList fromShipped;
        StockLibraryOrderList menu;
        EXPECT_TRUE(fromShipped.stockList()->getDict("S1"));
        EXPECT_EQ(menu.stockOrderList()->size(), 1u);
        ASSERT_EQ(StoredColumnWidths().size(), 1u);
        EXPECT_EQ(StoredColumnWidths()[0].width, 180);
    }
    EXPECT_EQ(readAll(shippedFile()), shippedBytes) << "nothing written back to the shipped file";

    // Once the user has a file, the shipped list is not consulted; other keys of the file stay;
    // a detached list writes nothing, an attached one even what was changed in place.
    pl::DictPtr prefs = pl::makeDict();
    prefs->setString(kStockLibrarySelectedRowKey, "ROW");
    ASSERT_TRUE(WriteUserPreferences(kStockLibraryDomain, prefs));
    {
        StockLibraryList printer(true);
        printer.stockList()->set("P", Entry(NamedPaper("Printer paper")).asTicket());
        StockLibraryList list;
        EXPECT_EQ(list.stockList()->size(), 0u);
        list.stockList()->set("K", Entry(NamedPaper("Direct")).asTicket());
    }
    const pl::DictPtr file = libraryDict();
    EXPECT_EQ(file->getString(kStockLibrarySelectedRowKey), "ROW");
    EXPECT_EQ(file->getDict(kStockLibraryStockListKey)->size(), 1u);
    EXPECT_TRUE(file->getDict(kStockLibraryStockListKey)->getDict("K"));
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
        list.clearStatus();
        StockLibrary e = Entry(NamedPaper("Fresh"));
        const std::string key = list.add(&e);
        EXPECT_TRUE(libraryDict()->getDict(kStockLibraryStockListKey)->getDict(key));
    }
}

TEST_F(StockLibraryListTest, MenuOrderKeepsTheLast25NewestFirstWithoutRepeats)
{
    auto head = [](const StockLibraryOrderList& order) {
        std::string out;
        for (size_t i = 0; i < 3 && i < order.stockOrderList()->size(); ++i)
            out += (i ? " " : "") + pl::as<pl::String>(order.stockOrderList()->at(i))->text;
        return out;
    };
    {
        StockLibraryOrderList order;
        for (int i = 0; i < 30; ++i)
            order.updateOrderList("U" + std::to_string(i));
        order.updateOrderList(std::nullopt);
        order.updateOrderList(std::string("U10"));
        ASSERT_EQ(order.stockOrderList()->size(), 25u) << "moved, not copied";
        EXPECT_EQ(pl::as<pl::String>(order.stockOrderList()->at(24))->text, "U5");
        EXPECT_EQ(head(order), "U10 U29 U28");
        order.remove("U29");
    }
    EXPECT_EQ(head(StockLibraryOrderList()), "U10 U28 U27");

    // A hand-edited file: only the strings are kept.
    writeRaw(libraryFile(), "<plist><dict><key>" + std::string(kStockLibraryStockMenuListKey) +
                                "</key><array><string>A</string><integer>4</integer><string>B</string></array>"
                                "</dict></plist>");
    EXPECT_EQ(head(StockLibraryOrderList()), "A B");
}

TEST(ValidateAndFixStockEntry, ResetsWhatThePrinterLacks)
{
    Stock coated = NamedPaper("Coated"), mixed = NamedPaper("Mixed", 500), fine = NamedPaper("Fine", 280);
    coated.setCustomNameOnly(true);
    coated.setSidesCoated(9);
    coated.setCoatingType(3);
    mixed.setColor(99), mixed.setPunched(7), mixed.setFinish(2), mixed.setGrain(5);
    fine.setCustomNameOnly(true);
    const Stock fineBefore = fine;
    for (Stock* s : {&coated, &mixed, &fine})
        validateAndFixStockEntry(*s);
    EXPECT_EQ(std::pair(coated.sidesCoated(), coated.coatingType()), std::pair(9, kNotSet))
        << "for sides coated it is the coating type that goes";
    EXPECT_EQ(std::pair(coated.customName(), coated.customNameOnly()), std::pair(Stock::Text(""), false));
    EXPECT_EQ(std::tuple(mixed.color(), mixed.punched(), mixed.weight(), mixed.finish(), mixed.grain(), mixed.type()),
              std::tuple(kNotSet, kNotSet, kNotSet, 2, kNotSet, 1))
        << "an offered finish that is set stays";
    EXPECT_TRUE(fine == fineBefore);
    EXPECT_TRUE(fine.customNameOnly());
}

struct FakeTable : StockLibraryTable {
    std::vector<StockColumnWidth> widths;
    std::optional<std::string> revealed;
    std::vector<StockColumnWidth> columnWidths() const override { return widths; }
    void setColumnWidth(uint32_t column, int16_t width) override { widths.push_back({column, width}); }
    std::optional<std::string> selectedRow() const override { return std::nullopt; }
    void revealRow(const std::string& uuid) override { revealed = uuid; }
};

// The table's layout through the file; entries a table cannot take are skipped.
TEST_F(StockLibraryListTest, ColumnWidthsAndSelectedRowRoundTrip)
{
    FakeTable shown, restored;
    shown.widths = {{kStockColumnStatus, 24}, {kStockColumnName, 200}, {kStockColumnComment, -1}};
    ASSERT_TRUE(storeColumnWidths(shown) && storeSelectedRow("ROW-1"));
    pl::DictPtr prefs = CopyUserPreferences(kStockLibraryDomain);
    const pl::DictPtr widths = prefs->getDict(kStockLibraryColumnWidthsKey);
    ASSERT_TRUE(widths);
    widths->setInt("Wide", 70000), widths->setInt("LONGER", 5), widths->setString("TyPe", "80");
    ASSERT_TRUE(WriteUserPreferences(kStockLibraryDomain, prefs));
    setColumnWidths(restored);
    setSelectedRow(restored);
    ASSERT_EQ(restored.widths.size(), 3u);
    for (size_t i = 0; i < 3; ++i)
        EXPECT_EQ(std::pair(restored.widths[i].column, restored.widths[i].width),
                  std::pair(shown.widths[i].column, shown.widths[i].width));
    EXPECT_EQ(restored.revealed, "ROW-1");
}

} // namespace
} // namespace talmo::test
