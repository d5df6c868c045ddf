#include "platform/platform.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace talmo;

namespace {

const std::string kBundles = TALMO_SOURCE_DIR "/tests/platform/data/bundles/";

TEST(Bundle, OpensOnlyAFolderWithASoundDescriptionAndASafeLibraryName)
{
    auto bare = Bundle::open(kBundles + "Bare.plugin/");
    ASSERT_TRUE(bare);
    EXPECT_EQ(bare->path(), kBundles + "Bare.plugin");
    EXPECT_EQ(bare->executablePath(), kBundles + "Bare.plugin/libBare.so") << "named by the folder";
    for (const char* refused : {"Missing.plugin", "BrokenInfo.plugin", "ArrayInfo.plugin"})
        EXPECT_FALSE(Bundle::open(kBundles + refused)) << refused;
    auto unsafe = Bundle::open(kBundles + "UnsafeLibrary.plugin");
    ASSERT_TRUE(unsafe);
    EXPECT_FALSE(unsafe->executablePath());
}

TEST(Bundle, FindsResourcesFirstInResourcesThenInTheLocalizationNeverOutside)
{
    auto b = Bundle::open(kBundles + "Sample.plugin");
    ASSERT_TRUE(b);
    const std::string res = kBundles + "Sample.plugin/Resources/";
    EXPECT_EQ(b->resourcePath("both.txt"), res + "both.txt");
    EXPECT_EQ(b->resourcePath("only-localized.txt"), res + "en.lproj/only-localized.txt");
    EXPECT_EQ(b->resourcePath("ppd/talmo-studio-press.ppd"), res + "ppd/talmo-studio-press.ppd");
    for (const char* no : {"absent.txt", "../Info.plist", "/etc/passwd", "ppd/../both.txt", "", "ppd//x.ppd"})
        EXPECT_FALSE(b->resourcePath(no)) << no;
}

TEST(Bundle, LocalizedStringsFallBackAndAMalformedTableCountsAsEmpty)
{
    auto b = Bundle::open(kBundles + "Sample.plugin");
    ASSERT_TRUE(b);
    EXPECT_EQ(b->localizedString("PrinterDefault"), "Printer Default");
    EXPECT_EQ(b->localizedString("Missing"), "STRING NOT FOUND");
    EXPECT_EQ(b->localizedString("PrinterDefault", "x", "NoSuchTable"), "x");
    EXPECT_EQ(b->localizedString("PrinterDefault", "x", "../en.lproj/Localizable"), "x");
    testing::internal::CaptureStderr();
    EXPECT_EQ(b->localizedString("A", "x", "Broken"), "x");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), kBundles + "Sample.plugin/Resources/en.lproj/Broken.strings" +
                                                          ":3: expected ';' after the entry for \"B\" (line 2)\n");
}

TEST(Bundle, TheExtensionBundleComesFromTheEnvironmentUntilSet)
{
    SetExtensionBundle(std::nullopt);
    unsetenv("TALMO_BUNDLE_DIR");
    EXPECT_EQ(ExtensionBundle(), nullptr);
    setenv("TALMO_BUNDLE_DIR", (kBundles + "Sample.plugin").c_str(), 1);
    ASSERT_NE(ExtensionBundle(), nullptr);
    EXPECT_EQ(ExtensionBundle()->identifier(), "com.example.sample");
    // Set by the plug-in itself: the environment no longer counts, and that bundle's PPD is the demo's.
    SetExtensionBundle(Bundle::open(kBundles + "Bare.plugin"));
    ASSERT_NE(ExtensionBundle(), nullptr);
    EXPECT_EQ(ExtensionBundle()->path(), kBundles + "Bare.plugin");
    SetExtensionBundle(Bundle::open(kBundles + "Sample.plugin"));
    EXPECT_EQ(DemoPrinter().ppdPath, kBundles + "Sample.plugin/Resources/ppd/talmo-studio-press.ppd");
    unsetenv("TALMO_BUNDLE_DIR");
    SetExtensionBundle(std::nullopt);
}

} // namespace
