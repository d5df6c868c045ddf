// The master table of job-level ticket keys.
#include "settings/settings.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>

namespace talmo {
namespace {

TEST(TicketKeys, MasterTableHoldsEachKeyOnceWithinTheFamily)
{
    EXPECT_EQ(kJobLevelTicketKeyCount, 69u);
    std::set<std::string> seen;
    for (const TicketKeyInfo& info : kJobLevelTicketKeys) {
        EXPECT_TRUE(std::string_view(info.key).starts_with("com.talmo.print.")) << info.key;
        EXPECT_TRUE(seen.insert(info.key).second) << "twice: " << info.key;
    }
}

TEST(TicketKeys, KeysThatKeepTheirOwnSpelling)
{
    EXPECT_STREQ(kOPISubsitutionKey, "com.talmo.print.OPISubsitution");
    EXPECT_STREQ(kWatermarkKey, "com.talmo.print.watermark.Watermark");
    EXPECT_STREQ(kWatermarksFile, "com.talmo.printing.watermarks.plist");
    EXPECT_STREQ(kThreadNameFormat, "com.talmo.print.pde.Thread-%d");
}

TEST(TicketKeys, ImportOnlyAndUntransferredItemsAreMarked)
{
    auto find = [](const char* key) -> const TicketKeyInfo* {
        for (const TicketKeyInfo& info : kJobLevelTicketKeys)
            if (std::string_view(info.key) == key)
                return &info;
        return nullptr;
    };
    struct Case {
        const char* key;
        TicketValueType type;
        TicketTPIF tpif;
    };
    const Case cases[] = {
        {kFinishingOffsetEnableSubsetKey, TicketValueType::Number, TicketTPIF::ImportOnly},
        {kFinishingCustomKey, TicketValueType::String, TicketTPIF::ImportOnly},
        {kBookletLayoutKey, TicketValueType::Boolean, TicketTPIF::No},
        {kSpecialPagesInsertListKey, TicketValueType::Array, TicketTPIF::Yes},
        {kRotateBooklet180DegreesKey, TicketValueType::Removed, TicketTPIF::No},
        {kEmitTPIFKey, TicketValueType::Number, TicketTPIF::No},
    };
    for (const Case& c : cases) {
        const TicketKeyInfo* info = find(c.key);
        ASSERT_NE(info, nullptr) << c.key;
        EXPECT_EQ(info->type, c.type) << c.key;
        EXPECT_EQ(info->tpif, c.tpif) << c.key;
    }
}

} // namespace
} // namespace talmo
