// The shell's operations called directly (linked in), where its process-wide state is
// visible: the current print session and the instance registry.
#include "plugin/plugin.h"

#include <gtest/gtest.h>

using namespace talmo;

namespace {

CFUUIDBytes bytesOf(const char* text)
{
    CFUUIDBytes b{};
    auto u = Uuid::fromString(text);
    EXPECT_TRUE(u);
    for (size_t i = 0; i < 16; ++i)
        b.bytes[i] = u->bytes()[i];
    return b;
}

} // namespace

TEST(GenericEntryPoints, TheCurrentSessionSpansInitializeToTerminate)
{
    PrintSession session;
    SetCurrentPrintSession(nullptr);
    EXPECT_EQ(TalmoPDEProlog(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), noErr);
    EXPECT_EQ(GetCurrentPrintSession(), nullptr);
    EXPECT_EQ(TalmoPDEInitialize(nullptr, nullptr, nullptr, nullptr, &session), noErr);
    EXPECT_EQ(GetCurrentPrintSession(), &session);
    EXPECT_EQ(TalmoPDESync(nullptr, &session, true), noErr);
    EXPECT_EQ(GetCurrentPrintSession(), &session);
    EXPECT_EQ(TalmoPDETerminate(nullptr, noErr), noErr);
    EXPECT_EQ(GetCurrentPrintSession(), nullptr);
}

TEST(QueryInterface, NullsAreRefusedWithoutTouchingCounts)
{
    const Uuid type = *Uuid::fromString(kPMPrintingDialogExtensionTypeIDStr);
    auto* instance = static_cast<IUnknownInstance*>(TalmoPDEPluginFactory(nullptr, &type));
    ASSERT_TRUE(instance);
    EXPECT_EQ(QueryInterface(instance, bytesOf(kIUnknownUUIDStr), nullptr), HRESULT(0x80000004));
    void* out = reinterpret_cast<void*>(1);
    EXPECT_EQ(QueryInterface(nullptr, bytesOf(kIUnknownUUIDStr), &out), HRESULT(0x80000004));
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(instance->refCount, 1u);
    EXPECT_EQ(IUnknownAddRef(nullptr), 0u);
    EXPECT_EQ(IUnknownRelease(nullptr), 0u);
    EXPECT_EQ(IUnknownRelease(instance), 0u);
    PlugInIntf* none = nullptr;
    EXPECT_EQ(Release(&none), noErr);
    EXPECT_EQ(Retain(nullptr), noErr);
    EXPECT_EQ(GetAPIVersion(nullptr, nullptr), noErr);
    EXPECT_EQ(CreatePlugInInterface(nullptr), noErr);
}
