#include "platform/platform.h"

#include <gtest/gtest.h>

using namespace talmo;

TEST(PlugInRegistry, CountsInstancesPerFactory)
{
    Uuid a = Uuid::generate(), b = Uuid::generate();
    CFPlugInAddInstanceForFactory(a);
    CFPlugInAddInstanceForFactory(a);
    CFPlugInAddInstanceForFactory(b);
    EXPECT_EQ(CFPlugInInstanceCountForFactory(a), 2u);
    EXPECT_EQ(CFPlugInInstanceCountForFactory(b), 1u);
    CFPlugInRemoveInstanceForFactory(a);
    EXPECT_EQ(CFPlugInInstanceCountForFactory(a), 1u);
    CFPlugInRemoveInstanceForFactory(a);
    CFPlugInRemoveInstanceForFactory(a); // one too many: ignored
    CFPlugInRemoveInstanceForFactory(b);
    EXPECT_EQ(CFPlugInInstanceCountForFactory(a), 0u);
    EXPECT_EQ(CFPlugInInstanceCountForFactory(b), 0u);
}
