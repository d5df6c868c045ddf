// The named paper library: validation against the printer's maps, the list's rules, the menu
// order, the repair of a paper taken for use, the file they share, and `talmo papers`.
#include "paperlib-fixture.h"

#include <sys/wait.h>

namespace talmo::test {
namespace {

TEST(StockLibraryValidation, StatusFollowsThePrinterMaps)
{
    const std::tuple<const char*, int32_t, std::function<void(Stock&)>, int32_t> cases[] = {
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
    writeRaw(shippedFile(), readAll(TALMO_SOURCE_DIR "/tests/paperlib/data/shipped-library.plist"));
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

    // With a user file: no shipped list, its other keys kept, widths a table cannot take skipped;
    // a detached list writes nothing, an attached one even what was changed in place.
    pl::DictPtr prefs = pl::makeDict(), widths = pl::makeDict();
    widths->setInt("NaMe", 200), widths->setInt("Wide", 70000), widths->setInt("LONGER", 5);
    widths->setString("TyPe", "80"), widths->setInt("CoMm", -1);
    prefs->set(kStockLibraryColumnWidthsKey, widths);
    prefs->setString(kStockLibrarySelectedRowKey, "ROW");
    ASSERT_TRUE(WriteUserPreferences(kStockLibraryDomain, prefs));
    const std::vector<StockColumnWidth> stored = StoredColumnWidths();
    ASSERT_EQ(stored.size(), 2u);
    EXPECT_EQ(std::pair(stored[0].column, stored[0].width), std::pair(kStockColumnName, int16_t(200)));
    EXPECT_EQ(std::pair(stored[1].column, stored[1].width), std::pair(kStockColumnComment, int16_t(-1)));
    {
        StockLibraryList printer(true);
        printer.stockList()->set("P", Entry(NamedPaper("Printer paper")).asTicket());
        StockLibraryList list;
        EXPECT_EQ(list.stockList()->size(), 0u);
        list.stockList()->set("K", Entry(NamedPaper("Direct")).asTicket());
    }
    const pl::DictPtr file = libraryDict();
    EXPECT_EQ(file->getString(kStockLibrarySelectedRowKey), "ROW");
    EXPECT_TRUE(file->getDict(kStockLibraryStockListKey)->size() == 1 &&
                file->getDict(kStockLibraryStockListKey)->getDict("K"));
}

TEST_F(StockLibraryListTest, DamagedFileGivesAFreshList)
{
    for (const auto& damaged :
         std::filesystem::directory_iterator(TALMO_SOURCE_DIR "/tests/paperlib/data/damaged-library")) {
        writeRaw(libraryFile(), readAll(damaged.path()));
        StockLibraryList list;
        const StockLibraryOrderList order;
        for (const auto& uuid : *order.stockOrderList())
            EXPECT_TRUE(pl::as<pl::String>(uuid)) << damaged.path() << ": the menu order keeps only strings";
        EXPECT_FALSE(list.isDuplicate(std::string("x"))) << damaged.path();
        list.clearStatus();
        StockLibrary e = Entry(NamedPaper("Fresh"));
        const std::string key = list.add(&e);
        EXPECT_TRUE(libraryDict()->getDict(kStockLibraryStockListKey)->getDict(key)) << damaged.path();
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
}

TEST(ValidateAndFixStockEntry, ResetsWhatThePrinterLacks)
{
    Stock coated = NamedPaper("Coated"), mixed = NamedPaper("Mixed", 500), fine = NamedPaper("Fine", 280);
    coated.setCustomNameOnly(true), coated.setSidesCoated(9), coated.setCoatingType(3);
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

// `talmo papers`: the library from the command line, and a printer's list as a property list.
struct PapersCommand : LibraryHome {
    // Exit status, stdout and stderr of `talmo ARGS` run with the test's private home.
    std::tuple<int, std::string, std::string> talmo(const std::vector<std::string>& args)
    {
        std::string command = TALMO_CLI;
        for (const std::string& a : args)
            command += " '" + a + "'";
        const int st = std::system((command + " >" + root_ + "/out 2>" + root_ + "/err").c_str());
        return {WIFEXITED(st) ? WEXITSTATUS(st) : -1, readAll(root_ + "/out"), readAll(root_ + "/err")};
    }
    std::string out(const std::vector<std::string>& args) { return std::get<1>(talmo(args)); }
};

TEST_F(PapersCommand, AddListRenameRemove)
{
    writeRaw(root_ + "/heavy.plist", pl::writePlist(NamedPaper("", 350).asTicket()));
    writeRaw(root_ + "/bad.plist", "<plist><array/></plist>");
    const std::string bond = out({"papers", "add", "Bond"}).substr(0, 36);
    const std::string heavy = out({"papers", "add", "Heavy Card", root_ + "/heavy.plist"}).substr(0, 36);
    const std::tuple<std::vector<std::string>, int, std::string> cases[] = {
        {{"papers", "add", "BOND"}, 1, "talmo: papers add: a paper named \"BOND\" exists already\n"},
        {{"papers", "rename", "heavy card", "Bond"}, 1, ""},
        {{"papers", "rename", "heavy card", "Card 350"}, 0, ""},
        {{"papers", "remove", bond}, 0, ""},
        {{"papers", "remove", "Bond"}, 1, "talmo: papers remove: no paper named \"Bond\"\n"},
        {{"papers", "add", "X", root_ + "/bad.plist"}, 1, ""},
        {{"papers", "add"}, 2, ""}};
    for (const auto& [args, status, err] : cases) {
        const auto [exit, o, e] = talmo(args);
        EXPECT_EQ(std::pair(exit, err.empty() ? "" : e), std::pair(status, err)) << args[1] << " " << args.back();
    }
    EXPECT_EQ(out({"papers", "list"}), heavy + "\tunsupported-values\tCard 350\n");
}

TEST_F(PapersCommand, FetchWritesThePrinterListInItsOrder)
{
    ScriptedServer printer(Answer(HttpResponse("200 OK", PrinterAnswer(3))));
    const auto [exit, doc, err] = talmo({"papers", "fetch", printer.address()});
    ASSERT_EQ(exit, 0) << err;
    ASSERT_EQ(std::get<0>(talmo({"papers", "fetch", printer.address(), "-o", root_ + "/list.plist"})), 0);
    EXPECT_EQ(readAll(root_ + "/list.plist"), doc);
    const pl::ArrayPtr list = pl::as<pl::Array>(pl::readPlist(doc));
    EXPECT_TRUE(list && list->size() == 3u);
    const std::string closed = "127.0.0.1:" + std::to_string(FreeLoopbackPort());
    EXPECT_EQ(std::get<2>(talmo({"papers", "fetch", closed, "-o", root_ + "/none.plist"})),
              "Unable to connect to server: Connection refused\ntalmo: papers fetch: cannot reach the printer at " +
                  closed + "\n");
    EXPECT_FALSE(std::filesystem::exists(root_ + "/none.plist"));
}

} // namespace
} // namespace talmo::test
