#include "settings/settings.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace talmo;

TEST(GetTicketFromSession, ResolvesTheHandleOrRefusesWithoutTouchingTheOutput)
{
    PrintSession s, other;
    Ticket* t = nullptr;
    EXPECT_EQ(GetTicketFromSession(&s, kPMPageFormatTicket, &t), noErr);
    EXPECT_EQ(t, &s.pageFormat());
    Ticket sentinel;
    t = &sentinel;
    EXPECT_EQ(GetTicketFromSession(&s, "NoSuchTicket", &t), noErr); // missing: success, output kept
    EXPECT_EQ(GetTicketFromSession(nullptr, kPMPrintSettingsTicket, &t), kPMNoSession);
    EXPECT_EQ(GetTicketFromSession(&s, kPMPrintSettingsTicket, nullptr), paramErr);
    const pl::ValuePtr odd[] = {pl::makeString("1"), pl::makeInt(int64_t(1) << 40),
                                other.dictionary()->get(kPMPrintSettingsTicket), pl::makeInt(0)};
    for (const auto& entry : odd) {
        s.dictionary()->set("Odd", entry);
        EXPECT_EQ(GetTicketFromSession(&s, "Odd", &t), kPMInvalidTicket) << pl::writePlist(entry);
    }
    EXPECT_EQ(t, &sentinel);
}

TEST(GetTicketFromCurrentSession, FollowsTheCurrentSession)
{
    SetCurrentPrintSession(nullptr);
    Ticket* t = nullptr;
    EXPECT_EQ(GetTicketFromCurrentSession(kPMPrintSettingsTicket, &t), kPMNoSession);
    EXPECT_EQ(CurrentPrintSettingsTicket(), nullptr);
    PrintSession s;
    SetCurrentPrintSession(&s);
    EXPECT_EQ(GetTicketFromCurrentSession(kPMPrintSettingsTicket, &t), noErr);
    EXPECT_EQ(t, &s.printSettings());
    EXPECT_EQ(CurrentPrintSettingsTicket(), &s.printSettings());
    SetCurrentPrintSession(nullptr);
}

TEST(DictionaryNumbers, GetCFIndexFailsWithoutTouchingTheOutput)
{
    auto d = pl::makeDict();
    d->setInt("int", 42);
    d->setReal("integral", 7.0);
    d->setReal("fraction", 7.5);
    d->setBool("bool", true);
    d->setString("text", "42");
    CFIndex v = -1;
    EXPECT_TRUE(GetCFIndexFromCFDictionary(d, "int", &v));
    EXPECT_EQ(v, 42);
    EXPECT_TRUE(GetCFIndexFromCFDictionary(d, "integral", &v));
    EXPECT_EQ(v, 7);
    v = -1;
    for (const char* key : {"fraction", "bool", "text", "missing", ""})
        EXPECT_FALSE(GetCFIndexFromCFDictionary(d, key, &v)) << key;
    EXPECT_FALSE(GetCFIndexFromCFDictionary(nullptr, "int", &v));
    EXPECT_FALSE(GetCFIndexFromCFDictionary(d, "int", nullptr));
    EXPECT_EQ(v, -1);
}

TEST(DictionaryNumbers, ReadsOnlyWhatFitsTheRequestedType)
{
    auto d = pl::makeDict();
    d->setInt("big", 40000);
    d->setInt("min32", INT32_MIN);
    d->setReal("huge", 1e300);
    d->setReal("half", 0.5);

    int16_t s16 = 5;
    EXPECT_FALSE(CFDictionaryGetNumber(d, "big", &s16));
    EXPECT_EQ(s16, 5);
    int32_t s32 = 0;
    EXPECT_TRUE(CFDictionaryGetNumber(d, "big", &s32));
    EXPECT_EQ(s32, 40000);
    EXPECT_TRUE(CFDictionaryGetNumber(d, "min32", &s32));
    EXPECT_EQ(s32, INT32_MIN);
    int8_t s8 = 1;
    EXPECT_FALSE(CFDictionaryGetNumber(d, "min32", &s8));
    float f32 = 1;
    EXPECT_FALSE(CFDictionaryGetNumber(d, "huge", &f32));
    EXPECT_EQ(f32, 1);
    EXPECT_TRUE(CFDictionaryGetNumber(d, "half", &f32));
    EXPECT_EQ(f32, 0.5f);
    double f64 = 0;
    EXPECT_TRUE(CFDictionaryGetNumber(d, "big", &f64));
    EXPECT_EQ(f64, 40000.0);
    int64_t s64 = 0;
    EXPECT_FALSE(CFDictionaryGetNumber(d, "huge", &s64));
    EXPECT_FALSE(CFDictionaryGetNumber(d, "half", &s32));
    uint16_t u16 = 0;
    EXPECT_FALSE(CFDictionaryGetNumber(d, "min32", &u16));
    EXPECT_TRUE(CFDictionaryGetNumber(d, "big", &u16));
    EXPECT_EQ(u16, 40000);
    EXPECT_FALSE(CFDictionaryGetNumber(d, "big", static_cast<void*>(&s32), CFNumberType(99)));
}

TEST(DictionaryValues, SettersStoreByTypeOrNothing)
{
    auto d = pl::makeDict();
    int16_t s16 = -3;
    EXPECT_TRUE(CFDictionarySetNumber(d, "s16", &s16, kCFNumberSInt16Type));
    EXPECT_TRUE(pl::equal(d->get("s16"), pl::makeInt(-3)));
    float f = 1.25f;
    EXPECT_TRUE(CFDictionarySetNumber(d, "f", &f, kCFNumberFloat32Type));
    EXPECT_TRUE(pl::equal(d->get("f"), pl::makeReal(1.25)));
    EXPECT_FALSE(CFDictionarySetNumber(d, "x", &s16, CFNumberType(0)));
    EXPECT_FALSE(CFDictionarySetNumber(d, "", &s16, kCFNumberSInt16Type));
    EXPECT_FALSE(CFDictionarySetNumber(d, "x", uint64_t(UINT64_MAX)));

    // "Grosse" with a sharp s in three encodings reads as the same text.
    const std::string utf8 = "Gro\xC3\x9F"
                             "e";
    const std::string latin1 = "Gro\xDF"
                               "e";
    const std::string macRoman = "Gro\xA7"
                                 "e";
    EXPECT_TRUE(CFDictionarySetCString(d, "utf8", utf8.c_str(), kCFStringEncodingUTF8));
    EXPECT_TRUE(CFDictionarySetCString(d, "latin1", latin1.c_str(), kCFStringEncodingISOLatin1));
    EXPECT_TRUE(CFDictionarySetCString(d, "macroman", macRoman.c_str(), kCFStringEncodingMacRoman));
    for (const char* key : {"utf8", "latin1", "macroman"})
        EXPECT_EQ(d->getString(key), utf8) << key;
    EXPECT_FALSE(CFDictionarySetCString(d, "x", "\xC3", kCFStringEncodingUTF8));
    EXPECT_FALSE(CFDictionarySetCString(d, "x", "\xE9t\xE9", kCFStringEncodingASCII));
    EXPECT_FALSE(CFDictionarySetCString(d, "x", "x", CFStringEncoding(0x1234)));
    EXPECT_FALSE(CFDictionarySetCString(d, "x", nullptr, kCFStringEncodingUTF8));
    EXPECT_FALSE(d->contains("x"));
}

TEST(DictionaryNesting, GetDictionaryOrCreateSharesTheNestedDictionary)
{
    auto d = pl::makeDict();
    auto nested = CFDictionaryGetDictionaryOrCreate(d, "n");
    ASSERT_TRUE(nested);
    nested->setInt("x", 1);
    EXPECT_EQ(d->getDict("n")->getInt("x"), 1);
    EXPECT_EQ(CFDictionaryGetDictionaryOrCreate(d, "n"), nested);

    d->setString("s", "keep");
    EXPECT_EQ(CFDictionaryGetDictionaryOrCreate(d, "s"), nullptr);
    EXPECT_EQ(d->getString("s"), "keep");
    EXPECT_EQ(CFDictionaryGetDictionaryOrCreate(nullptr, "n"), nullptr);

    pl::DictPtr ref = nested;
    CFReleaseAndNULL(&ref);
    EXPECT_EQ(ref, nullptr);
    EXPECT_TRUE(d->getDict("n")); // the parent still owns it
}

TEST(TypedTicketItems, ReadsReportNotFoundAndWrongTypeWithoutTouchingTheOutput)
{
    Ticket t;
    ASSERT_EQ(TicketSetInt32(&t, "n", 5, kTalmoPanelCreator), noErr);
    ASSERT_EQ(TicketSetBool(&t, "b", true, kTalmoHostCreator), noErr);
    ASSERT_EQ(TicketSetString(&t, "s", "text", kTalmoSpecialPagesCreator), noErr);
    ASSERT_EQ(t.set("big", pl::makeInt(int64_t(1) << 33), "T"), noErr);
    ASSERT_EQ(t.set("r", pl::makeReal(3.0), "T"), noErr);

    int32_t n = -1;
    EXPECT_EQ(TicketGetInt32(&t, "n", &n), noErr);
    EXPECT_EQ(n, 5);
    EXPECT_EQ(TicketGetInt32(&t, "r", &n), noErr);
    EXPECT_EQ(n, 3);
    n = -1;
    EXPECT_EQ(TicketGetInt32(&t, "missing", &n), kPMTicketItemNotFound);
    EXPECT_EQ(TicketGetInt32(&t, "big", &n), kPMTicketItemWrongType);
    EXPECT_EQ(TicketGetInt32(&t, "b", &n), kPMTicketItemWrongType);
    EXPECT_EQ(TicketGetInt32(nullptr, "n", &n), paramErr);
    EXPECT_EQ(TicketGetInt32(&t, "n", nullptr), paramErr);
    EXPECT_EQ(n, -1);

    bool b = false;
    EXPECT_EQ(TicketGetBool(&t, "b", &b), noErr);
    EXPECT_TRUE(b);
    EXPECT_EQ(TicketGetBool(&t, "n", &b), kPMTicketItemWrongType);

    std::string s = "untouched";
    EXPECT_EQ(TicketGetString(&t, "n", &s), kPMTicketItemWrongType);
    EXPECT_EQ(s, "untouched");
    EXPECT_EQ(TicketGetString(&t, "s", &s), noErr);
    EXPECT_EQ(s, "text");

    EXPECT_EQ(t.creatorOf("n"), "com.talmo.printingmanager");
    EXPECT_EQ(t.creatorOf("s"), "com.talmo.print");
    EXPECT_EQ(t.creatorOf("b"), "T");
    EXPECT_FALSE(t.isLocked("n"));
}

TEST(TypedTicketItems, ContainersAreCopiesAndNullRemoves)
{
    Ticket t;
    auto d = pl::makeDict();
    d->setInt("x", 1);
    auto a = pl::makeArray();
    a->append(d);
    ASSERT_EQ(TicketSetDict(&t, "d", d, "T"), noErr);
    ASSERT_EQ(TicketSetArray(&t, "a", a, "T"), noErr);

    pl::DictPtr outD;
    ASSERT_EQ(TicketGetDict(&t, "d", &outD), noErr);
    outD->setInt("x", 2);
    pl::DictPtr again;
    ASSERT_EQ(TicketGetDict(&t, "d", &again), noErr);
    EXPECT_EQ(again->getInt("x"), 1);
    pl::ArrayPtr outA;
    ASSERT_EQ(TicketGetArray(&t, "a", &outA), noErr);
    EXPECT_EQ(outA->size(), 1u);
    EXPECT_EQ(TicketGetArray(&t, "d", &outA), kPMTicketItemWrongType);

    EXPECT_EQ(TicketSetDict(&t, "d", nullptr, "T"), noErr);
    EXPECT_FALSE(t.contains("d"));
    EXPECT_EQ(TicketRemove(&t, "a"), noErr);
    EXPECT_EQ(t.size(), 0u);
}

TEST(TypedTicketItems, WritesRefuseLockedItemsAndBadArguments)
{
    Ticket t;
    ASSERT_EQ(t.set("locked", pl::makeInt(1), "T", true), noErr);
    EXPECT_EQ(TicketSetInt32(&t, "locked", 2, "T"), kPMTicketItemLocked);
    EXPECT_EQ(TicketRemove(&t, "locked"), kPMTicketItemLocked);
    EXPECT_EQ(TicketSetInt32(nullptr, "k", 2, "T"), paramErr);
    EXPECT_EQ(TicketSetString(&t, "k", "v", ""), paramErr);
    EXPECT_EQ(TicketSetBool(&t, "", true, "T"), paramErr);
    EXPECT_EQ(t.keys(), (std::vector<std::string>{"locked"}));
}
