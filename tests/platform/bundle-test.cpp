#include "platform/platform.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

using namespace talmo;
namespace fs = std::filesystem;

namespace {

class TempBundle : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::string tmpl = (fs::temp_directory_path() / "talmo-bundle-XXXXXX").string();
        ASSERT_TRUE(mkdtemp(tmpl.data()));
        root = tmpl;
        dir = root / "Sample.plugin";
        fs::create_directories(dir / "Resources/en.lproj");
        fs::create_directories(dir / "Resources/ppd");
    }
    void TearDown() override { fs::remove_all(root); }

    void write(const fs::path& rel, const std::string& text) { std::ofstream(dir / rel, std::ios::binary) << text; }

    fs::path root, dir;
};

const char* kInfo = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
                    "<key>CFBundleIdentifier</key><string>com.example.sample</string>"
                    "<key>CFBundleExecutable</key><string>libSample.so</string>"
                    "</dict></plist>\n";

} // namespace

using BundleTest = TempBundle;

TEST_F(BundleTest, NamesItsLibraryFromItsDescriptionOrItsFolder)
{
    auto bare = Bundle::open(dir.string());
    ASSERT_TRUE(bare);
    EXPECT_EQ(bare->executablePath(), (dir / "libSample.so").string());
    write("Info.plist", kInfo);
    auto b = Bundle::open((dir / "").string());
    ASSERT_TRUE(b);
    EXPECT_EQ(b->path(), dir.string());
    EXPECT_EQ(b->identifier(), "com.example.sample");
    EXPECT_EQ(b->executablePath(), (dir / "libSample.so").string());
}

TEST_F(BundleTest, RefusesAMissingFolderABrokenDescriptionAndAnUnsafeLibraryName)
{
    EXPECT_FALSE(Bundle::open((root / "missing").string()));
    write("Info.plist", "<plist><dict><key>x</key></dict>");
    EXPECT_FALSE(Bundle::open(dir.string()));
    write("Info.plist", "<plist version=\"1.0\"><array/></plist>");
    EXPECT_FALSE(Bundle::open(dir.string()));
    write("Info.plist",
          "<plist version=\"1.0\"><dict><key>CFBundleExecutable</key><string>../x.so</string></dict></plist>");
    auto b = Bundle::open(dir.string());
    ASSERT_TRUE(b);
    EXPECT_FALSE(b->executablePath());
}

TEST_F(BundleTest, FindsResourcesFirstInResourcesThenInTheLocalization)
{
    write("Resources/both.txt", "top");
    write("Resources/en.lproj/both.txt", "localized");
    write("Resources/en.lproj/only-localized.txt", "x");
    write("Resources/ppd/demo.ppd", "*PPD-Adobe: \"4.3\"\n");
    auto b = Bundle::open(dir.string());
    ASSERT_TRUE(b);
    EXPECT_EQ(b->resourcePath("both.txt"), (dir / "Resources/both.txt").string());
    EXPECT_EQ(b->resourcePath("only-localized.txt"), (dir / "Resources/en.lproj/only-localized.txt").string());
    EXPECT_EQ(b->resourcePath("ppd/demo.ppd"), (dir / "Resources/ppd/demo.ppd").string());
    EXPECT_FALSE(b->resourcePath("absent.txt"));
    for (const char* unsafe : {"../Info.plist", "/etc/passwd", "ppd/../both.txt", "", "ppd//demo.ppd", "./both.txt"})
        EXPECT_FALSE(b->resourcePath(unsafe)) << unsafe;
}

TEST_F(BundleTest, LocalizedStringsFallBackToStringNotFound)
{
    write("Resources/en.lproj/Localizable.strings", "\"PrinterDefault\" = \"Printer Default\";\n");
    write("Resources/en.lproj/Other.strings", "\"PrinterDefault\" = \"Other\";\n");
    auto b = Bundle::open(dir.string());
    ASSERT_TRUE(b);
    EXPECT_EQ(b->localizedString("PrinterDefault"), "Printer Default");
    EXPECT_EQ(b->localizedString("Missing"), "STRING NOT FOUND");
    EXPECT_EQ(b->localizedString("PrinterDefault", "x", "Other"), "Other");
    EXPECT_EQ(b->localizedString("PrinterDefault", "x", "NoSuchTable"), "x");
    EXPECT_EQ(b->localizedString("PrinterDefault", "x", "../Other"), "x");
}

TEST_F(BundleTest, AMalformedTableCountsAsEmpty)
{
    write("Resources/en.lproj/Localizable.strings", "\"A\" = \"1\";\n\"B\" = \"2\"\n");
    auto b = Bundle::open(dir.string());
    ASSERT_TRUE(b);
    testing::internal::CaptureStderr();
    EXPECT_EQ(b->localizedString("A"), "STRING NOT FOUND");
    EXPECT_EQ(b->localizedString("B"), "STRING NOT FOUND");
    std::string err = testing::internal::GetCapturedStderr();
    EXPECT_EQ(err, (dir / "Resources/en.lproj/Localizable.strings").string() +
                       ":3: expected ';' after the entry for \"B\" (line 2)\n");
}

TEST_F(BundleTest, TheExtensionBundleComesFromTheEnvironmentUntilSet)
{
    write("Info.plist", kInfo);
    SetExtensionBundle(std::nullopt);
    unsetenv("TALMO_BUNDLE_DIR");
    EXPECT_EQ(ExtensionBundle(), nullptr);
    setenv("TALMO_BUNDLE_DIR", dir.c_str(), 1);
    ASSERT_NE(ExtensionBundle(), nullptr);
    EXPECT_EQ(ExtensionBundle()->identifier(), "com.example.sample");

    fs::create_directories(root / "Other.plugin");
    SetExtensionBundle(Bundle::open((root / "Other.plugin").string()));
    ASSERT_NE(ExtensionBundle(), nullptr);
    EXPECT_EQ(ExtensionBundle()->path(), (root / "Other.plugin").string());
    unsetenv("TALMO_BUNDLE_DIR");
    SetExtensionBundle(std::nullopt);
}
