#include "settings/settings.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace talmo;

namespace {

// The number read as T, or "refused" when the read fails and leaves the output alone.
template <class T> std::string numberAs(const pl::DictPtr& d, const char* key)
{
    T v = T(9);
    if (!CFDictionaryGetNumber(d, key, &v))
        return v == T(9) ? "refused" : "refused, output changed";
    std::ostringstream s;
    s << +v;
    return s.str();
}

} // namespace

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

    SetCurrentPrintSession(nullptr);
    EXPECT_EQ(GetTicketFromCurrentSession(kPMPrintSettingsTicket, &t), kPMNoSession);
    EXPECT_EQ(CurrentPrintSettingsTicket(), nullptr);
    SetCurrentPrintSession(&s);
    EXPECT_EQ(CurrentPrintSettingsTicket(), &s.printSettings());
    SetCurrentPrintSession(nullptr);
}

TEST(DictionaryNumbers, ReadsOnlyWhatFitsTheRequestedTypeWithoutTouchingTheOutputOtherwise)
{
    auto d = pl::makeDict();
    d->setInt("big", 40000);
    d->setInt("min32", INT32_MIN);
    d->setReal("huge", 1e300);
    d->setReal("half", 0.5);
    d->setReal("integral", 7.0);
    d->setBool("bool", true);
    d->setString("text", "42");
    const std::pair<std::string, std::string> cases[] = {
        {numberAs<int16_t>(d, "big"), "refused"},       {numberAs<int32_t>(d, "big"), "40000"},
        {numberAs<uint16_t>(d, "big"), "40000"},        {numberAs<int32_t>(d, "text"), "refused"},
        {numberAs<int32_t>(d, "min32"), "-2147483648"}, {numberAs<int8_t>(d, "min32"), "refused"},
        {numberAs<uint16_t>(d, "min32"), "refused"},    {numberAs<float>(d, "huge"), "refused"},
        {numberAs<int64_t>(d, "huge"), "refused"},      {numberAs<float>(d, "half"), "0.5"},
        {numberAs<int32_t>(d, "half"), "refused"},
    };
    for (size_t i = 0; i < std::size(cases); ++i)
        EXPECT_EQ(cases[i].first, cases[i].second) << "case " << i;
    int32_t s32 = 0;
    EXPECT_FALSE(CFDictionaryGetNumber(d, "big", static_cast<void*>(&s32), CFNumberType(99)));

    CFIndex v = -1;
    for (const char* key : {"half", "bool", "text", "missing", ""})
        EXPECT_FALSE(GetCFIndexFromCFDictionary(d, key, &v)) << key;
    EXPECT_FALSE(GetCFIndexFromCFDictionary(nullptr, "big", &v));
    EXPECT_FALSE(GetCFIndexFromCFDictionary(d, "big", nullptr));
    EXPECT_EQ(v, -1);
    EXPECT_TRUE(GetCFIndexFromCFDictionary(d, "integral", &v));
    EXPECT_EQ(v, 7);
}

TEST(DictionaryValues, SettersConvertOrStoreNothingNestedDictionariesAreShared)
{
    auto d = pl::makeDict();
    int16_t s16 = -3;
    EXPECT_FALSE(CFDictionarySetNumber(d, "x", &s16, CFNumberType(0)));
    EXPECT_FALSE(CFDictionarySetNumber(d, "", &s16, kCFNumberSInt16Type));
    EXPECT_FALSE(CFDictionarySetNumber(d, "x", uint64_t(UINT64_MAX)));

    // "Grosse" with a sharp s in three encodings reads as the same text.
    const std::pair<const char*, CFStringEncoding> grosse[] = {
        {"Gro\303\237e", kCFStringEncodingUTF8},
        {"Gro\337e", kCFStringEncodingISOLatin1},
        {"Gro\247e", kCFStringEncodingMacRoman},
    };
    for (const auto& [bytes, encoding] : grosse) {
        EXPECT_TRUE(CFDictionarySetCString(d, "s", bytes, encoding)) << encoding;
        EXPECT_EQ(d->getString("s"), "Gro\303\237e") << encoding;
    }
    EXPECT_FALSE(CFDictionarySetCString(d, "x", "\xC3", kCFStringEncodingUTF8));
    EXPECT_FALSE(CFDictionarySetCString(d, "x", "\xE9t\xE9", kCFStringEncodingASCII));
    EXPECT_FALSE(CFDictionarySetCString(d, "x", "x", CFStringEncoding(0x1234)));
    EXPECT_FALSE(CFDictionarySetCString(d, "x", nullptr, kCFStringEncodingUTF8));
    EXPECT_FALSE(d->contains("x"));

    // A nested dictionary is made once and shared; another value under the key is kept.
    auto nested = CFDictionaryGetDictionaryOrCreate(d, "n");
    ASSERT_TRUE(nested);
    nested->setInt("x", 1);
    EXPECT_EQ(d->getDict("n")->getInt("x"), 1);
    EXPECT_EQ(CFDictionaryGetDictionaryOrCreate(d, "n"), nested);
    EXPECT_EQ(CFDictionaryGetDictionaryOrCreate(d, "s"), nullptr);
    EXPECT_EQ(d->getString("s"), "Gro\303\237e");
    EXPECT_EQ(CFDictionaryGetDictionaryOrCreate(nullptr, "n"), nullptr);
}

TEST(TypedTicketItems, ReadsReportNotFoundAndWrongTypeWithoutTouchingTheOutput)
{
    Ticket t;
    ASSERT_EQ(TicketSetBool(&t, "b", true, "T"), noErr);
    ASSERT_EQ(TicketSetString(&t, "s", "text", "T"), noErr);
    ASSERT_EQ(t.set("big", pl::makeInt(int64_t(1) << 33), "T"), noErr);
    ASSERT_EQ(t.set("r", pl::makeReal(3.0), "T"), noErr);
    const auto int32 = [](const Ticket* ticket, const char* key) {
        int32_t n = -1;
        return std::pair(TicketGetInt32(ticket, key, &n), n);
    };
    EXPECT_EQ(int32(&t, "r"), std::pair(noErr, 3));
    EXPECT_EQ(int32(&t, "missing"), std::pair(kPMTicketItemNotFound, -1));
    EXPECT_EQ(int32(&t, "big"), std::pair(kPMTicketItemWrongType, -1));
    EXPECT_EQ(int32(&t, "b"), std::pair(kPMTicketItemWrongType, -1));
    EXPECT_EQ(int32(nullptr, "r"), std::pair(paramErr, -1));
    EXPECT_EQ(TicketGetInt32(&t, "r", nullptr), paramErr);
    std::string s = "untouched";
    EXPECT_EQ(TicketGetString(&t, "b", &s), kPMTicketItemWrongType);
    EXPECT_EQ(s, "untouched");
    bool b = false;
    EXPECT_EQ(TicketGetBool(&t, "s", &b), kPMTicketItemWrongType);
}

TEST(TypedTicketItems, WritesStoreCopiesNullRemovesLockedOrBadArgumentsRefuse)
{
    Ticket t;
    auto d = pl::makeDict();
    d->setInt("x", 1);
    ASSERT_EQ(TicketSetDict(&t, "d", d, "T"), noErr);
    ASSERT_EQ(TicketSetArray(&t, "a", pl::makeArray(), "T"), noErr);
    d->setInt("x", 2); // the ticket holds a copy
    pl::DictPtr out, again;
    ASSERT_EQ(TicketGetDict(&t, "d", &out), noErr);
    out->setInt("y", 2); // and hands out copies
    ASSERT_EQ(TicketGetDict(&t, "d", &again), noErr);
    EXPECT_EQ(again->getInt("x"), 1);
    EXPECT_FALSE(again->contains("y"));
    pl::ArrayPtr outA;
    EXPECT_EQ(TicketGetArray(&t, "d", &outA), kPMTicketItemWrongType);
    EXPECT_EQ(TicketSetDict(&t, "d", nullptr, "T"), noErr);
    EXPECT_EQ(TicketRemove(&t, "a"), noErr);
    EXPECT_EQ(t.size(), 0u);

    ASSERT_EQ(t.set("locked", pl::makeInt(1), "T", true), noErr);
    EXPECT_EQ(TicketSetInt32(&t, "locked", 2, "T"), kPMTicketItemLocked);
    EXPECT_EQ(TicketRemove(&t, "locked"), kPMTicketItemLocked);
    EXPECT_EQ(TicketSetInt32(nullptr, "k", 2, "T"), paramErr);
    EXPECT_EQ(TicketSetString(&t, "k", "v", ""), paramErr);
    EXPECT_EQ(TicketSetBool(&t, "", true, "T"), paramErr);
    EXPECT_EQ(t.keys(), (std::vector<std::string>{"locked"}));
}
