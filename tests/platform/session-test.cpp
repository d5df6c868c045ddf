#include "platform/platform.h"

#include <gtest/gtest.h>

#include "testing/loopback-servers/loopback-servers.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>

using namespace talmo;

TEST(Ticket, KeepsItemsInInsertionOrderWithTheirCreators)
{
    Ticket t;
    EXPECT_EQ(t.set("b", pl::makeInt(1), "com.example.one"), noErr);
    EXPECT_EQ(t.set("a", pl::makeString("x"), "T"), noErr);
    EXPECT_EQ(t.set("b", pl::makeInt(2), "com.example.two"), noErr); // keeps its place
    EXPECT_EQ(t.keys(), (std::vector<std::string>{"b", "a"}));
    EXPECT_EQ(t.creatorOf("b"), "com.example.two");
    EXPECT_EQ(t.creatorOf("missing"), std::nullopt);
    EXPECT_TRUE(pl::equal(t.get("b"), pl::makeInt(2)));
    EXPECT_EQ(t.set("b", nullptr, "T"), noErr);
    EXPECT_EQ(t.set("", pl::makeInt(1), "T"), paramErr);
    EXPECT_EQ(t.set("k", pl::makeInt(1), ""), paramErr);
    EXPECT_EQ(t.keys(), (std::vector<std::string>{"a"}));
}

TEST(Ticket, ALockedItemRefusesEveryChange)
{
    Ticket t;
    ASSERT_EQ(t.set("k", pl::makeInt(1), "T", true), noErr);
    EXPECT_TRUE(t.isLocked("k"));
    EXPECT_EQ(t.set("k", pl::makeInt(2), "T"), kPMTicketItemLocked);
    EXPECT_EQ(t.set("k", nullptr, "T"), kPMTicketItemLocked);
    EXPECT_EQ(t.remove("k"), kPMTicketItemLocked);
    EXPECT_TRUE(pl::equal(t.get("k"), pl::makeInt(1)));
    EXPECT_EQ(t.remove("absent"), noErr);
}

TEST(Ticket, ValuesAreSnapshotsOnTheWayInAndOut)
{
    Ticket t;
    auto d = pl::makeDict();
    d->setInt("n", 1);
    ASSERT_EQ(t.set("d", d, "T"), noErr);
    d->setInt("n", 2); // the caller's dictionary is not the ticket's
    auto read = pl::as<pl::Dictionary>(t.get("d"));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->getInt("n"), 1);
    read->setInt("n", 3); // nor is what get() hands out
    EXPECT_EQ(pl::as<pl::Dictionary>(t.get("d"))->getInt("n"), 1);

    auto all = t.asDictionary();
    pl::as<pl::Dictionary>(all->get("d"))->setInt("n", 4);
    EXPECT_EQ(pl::as<pl::Dictionary>(t.get("d"))->getInt("n"), 1);
}

TEST(Ticket, LoadDictionaryIsAllOrNothing)
{
    Ticket t;
    ASSERT_EQ(t.set("locked", pl::makeInt(1), "T", true), noErr);
    auto d = pl::makeDict();
    d->setInt("a", 1);
    d->setInt("locked", 2);
    EXPECT_EQ(t.loadDictionary(d, "com.example"), kPMTicketItemLocked);
    EXPECT_FALSE(t.contains("a"));
    EXPECT_EQ(t.loadDictionary(nullptr, "com.example"), paramErr);
    EXPECT_EQ(t.loadDictionary(d, ""), paramErr);

    d->remove("locked");
    d->setString("b", "x");
    EXPECT_EQ(t.loadDictionary(d, "com.example"), noErr);
    EXPECT_EQ(t.keys(), (std::vector<std::string>{"locked", "a", "b"}));
    EXPECT_EQ(t.creatorOf("b"), "com.example");
    EXPECT_FALSE(t.isLocked("b"));
}

TEST(PrintSession, KeepsItsTicketsAsHandlesUnderTheirNames)
{
    PrintSession s;
    for (const char* name : {kPMPrintSettingsTicket, kPMPageFormatTicket, kPMPrinterInfoTicket}) {
        auto h = s.dictionary()->getInt(name);
        ASSERT_TRUE(h) << name;
        EXPECT_GT(*h, 0);
        EXPECT_EQ(s.ticketForHandle(*h), s.ticket(name));
    }
    EXPECT_EQ(s.ticket(kPMPrintSettingsTicket), &s.printSettings());
    EXPECT_EQ(s.ticket(kPMPageFormatTicket), &s.pageFormat());
    EXPECT_NE(&s.printSettings(), &s.pageFormat());
    EXPECT_EQ(s.ticket("NoSuchTicket"), nullptr);
    PrintSession other;
    EXPECT_EQ(other.ticketForHandle(*s.dictionary()->getInt(kPMPrintSettingsTicket)), nullptr);
    EXPECT_EQ(s.ticketForHandle(0), nullptr);
    EXPECT_TRUE(s.printer().isDemo) << "a session starts with the demo printer";
}

TEST(PrintSession, RemovesAnOwnedPpdWhenThePrinterChangesOnly)
{
    namespace fs = std::filesystem;
    fs::path owned = fs::temp_directory_path() / ("talmo-owned-" + std::to_string(getpid()) + ".ppd");
    fs::path kept = fs::temp_directory_path() / ("talmo-kept-" + std::to_string(getpid()) + ".ppd");
    std::ofstream(owned) << "x";
    std::ofstream(kept) << "x";
    {
        PrintSession s;
        s.setPrinter(Printer{"a", "", "", kept.string(), false}, false);
        s.setPrinter(Printer{"b", "", "", owned.string(), false}, true);
        EXPECT_TRUE(fs::exists(kept));
        EXPECT_TRUE(fs::exists(owned));
    }
    EXPECT_FALSE(fs::exists(owned));
    EXPECT_TRUE(fs::exists(kept));
    fs::remove(kept);
}

TEST(PrintSession, WritesThePrintersMakeAndModelLocked)
{
    PrintSession s;
    Ticket& info = s.printerInfo();
    const char* key = "com.apple.print.PrinterInfo.PMMakeAndModelName";
    EXPECT_TRUE(pl::equal(info.get(key), pl::makeString("Talmo Studio Press"))) << "the demo printer's";
    EXPECT_EQ(info.set(key, pl::makeString("Other Press"), "T"), kPMTicketItemLocked);
    s.setPrinter(Printer{"b", "", "Talmo Office Press", "", false});
    EXPECT_TRUE(pl::equal(info.get(key), pl::makeString("Talmo Office Press")));
    EXPECT_TRUE(info.isLocked(key));
    s.setPrinter(Printer{});
    EXPECT_FALSE(info.contains(key));
}

TEST(PrintSession, TheCurrentSessionIsClearedWhenItEnds)
{
    SetCurrentPrintSession(nullptr);
    EXPECT_EQ(GetCurrentPrintSession(), nullptr);
    {
        PrintSession s;
        SetCurrentPrintSession(&s);
        EXPECT_EQ(GetCurrentPrintSession(), &s);
    }
    EXPECT_EQ(GetCurrentPrintSession(), nullptr);
}

TEST(DemoPrinter, FindsItsPpdInTheExtensionBundleFirst)
{
    namespace fs = std::filesystem;
    std::string tmpl = (fs::temp_directory_path() / "talmo-demo-XXXXXX").string();
    ASSERT_TRUE(mkdtemp(tmpl.data()));
    fs::create_directories(fs::path(tmpl) / "Resources/ppd");
    std::ofstream(fs::path(tmpl) / "Resources/ppd/talmo-studio-press.ppd") << "*PPD-Adobe: \"4.3\"\n";
    SetExtensionBundle(Bundle::open(tmpl));
    EXPECT_EQ(DemoPrinter().ppdPath, tmpl + "/Resources/ppd/talmo-studio-press.ppd");
    SetExtensionBundle(std::nullopt);
    fs::remove_all(tmpl);
}

TEST(CupsPrinter, AnUnreachableOrSilentServerGivesNoPrinterWithinTheDeadline)
{
    EXPECT_FALSE(CupsPrinter("Anything", 1000, "127.0.0.1:" + std::to_string(test::FreeLoopbackPort())));
    test::ScriptedServer silent(test::Tarpit);
    const auto t0 = std::chrono::steady_clock::now();
    EXPECT_FALSE(CupsPrinter("Anything", 300, silent.address()));
    EXPECT_LT(std::chrono::steady_clock::now() - t0, std::chrono::seconds(2));
}
