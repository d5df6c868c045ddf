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
    std::set<std::string> seen;
    for (const TicketKeyInfo& info : kJobLevelTicketKeys) {
        EXPECT_TRUE(std::string_view(info.key).starts_with("com.talmo.print.")) << info.key;
        EXPECT_TRUE(seen.insert(info.key).second) << "twice: " << info.key;
    }
}

} // namespace
} // namespace talmo
