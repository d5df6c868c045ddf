#include "platform/platform.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

using namespace talmo;

TEST(Ticket, KeepsItemsInInsertionOrderAndRefusesChangesToLockedOnes)
{
    Ticket t;
    EXPECT_EQ(t.set("b", pl::makeInt(1), "com.example.one"), noErr);
    EXPECT_EQ(t.set("a", pl::makeString("x"), "T", true), noErr);
    EXPECT_EQ(t.set("b", pl::makeInt(2), "com.example.two"), noErr); // keeps its place
    EXPECT_EQ(t.keys(), (std::vector<std::string>{"b", "a"}));
    EXPECT_EQ(t.creatorOf("b"), "com.example.two");
    EXPECT_EQ(t.set("", pl::makeInt(1), "T"), paramErr);
    EXPECT_EQ(t.set("k", pl::makeInt(1), ""), paramErr);
    EXPECT_EQ(t.set("a", pl::makeInt(2), "T"), kPMTicketItemLocked);
    EXPECT_EQ(t.set("a", nullptr, "T"), kPMTicketItemLocked);
    EXPECT_EQ(t.remove("a"), kPMTicketItemLocked);
    EXPECT_TRUE(pl::equal(t.get("a"), pl::makeString("x")));
    EXPECT_EQ(t.set("b", nullptr, "T"), noErr);
    EXPECT_EQ(t.keys(), (std::vector<std::string>{"a"}));
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
    d->remove("locked");
    EXPECT_EQ(t.loadDictionary(d, ""), paramErr);
    EXPECT_EQ(t.loadDictionary(d, "com.example"), noErr);
    EXPECT_EQ(t.keys(), (std::vector<std::string>{"locked", "a"}));
    EXPECT_FALSE(t.isLocked("a"));
}

TEST(PrintSession, HandlesNameOnlyItsOwnTickets)
{
    PrintSession s, other;
    auto h = s.dictionary()->getInt(kPMPageFormatTicket);
    ASSERT_TRUE(h);
    EXPECT_EQ(s.ticketForHandle(*h), &s.pageFormat());
    EXPECT_EQ(other.ticketForHandle(*h), nullptr);
    EXPECT_EQ(s.ticketForHandle(0), nullptr);
    EXPECT_EQ(s.ticket("NoSuchTicket"), nullptr);
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

TEST(PrintSession, RemovesAnOwnedPpdWhenThePrinterChangesOnly)
{
    const std::string owned = testing::TempDir() + "owned.ppd", kept = testing::TempDir() + "kept.ppd";
    auto exists = [](const std::string& path) { return std::ifstream(path).good(); };
    std::ofstream(owned) << "x";
    std::ofstream(kept) << "x";
    {
        PrintSession s;
        SetCurrentPrintSession(&s);
        s.setPrinter(Printer{"a", "", "", kept, false}, false);
        s.setPrinter(Printer{"b", "", "", owned, false}, true);
        EXPECT_TRUE(exists(kept) && exists(owned));
    }
    EXPECT_FALSE(exists(owned));
    EXPECT_TRUE(exists(kept));
    EXPECT_EQ(GetCurrentPrintSession(), nullptr) << "a session that ends stops being current";
    std::remove(kept.c_str());
}
