// Hostile TPIF files: every file of data/malformed/ (named by its defect) is refused with
// kImportFileFailed and leaves the dictionary as it was; documents declaring entities are
// refused before anything is expanded.
#include "tpif-test-util.h"

#include "device/device.h"

#include <filesystem>

using namespace talmo;

namespace {

TEST(TpifImportHostile, EveryMalformedFileIsRefusedAndChangesNothing)
{
    TDPInitializeFromFile(std::string(TALMO_SOURCE_DIR) + "/resources/Device Profile.plist");
    int files = 0;
    for (const auto& e : std::filesystem::directory_iterator(tpiftest::dataPath("malformed"))) {
        const auto& path = e.path();
        ++files;
        SCOPED_TRACE(path.filename().string());
        auto d = pl::makeDict();
        d->setInt("com.talmo.print.FinishingOptions", 4);
        std::string why;
        EXPECT_EQ(TPIFImportFileAtPath(path.string(), d, &why), kImportFileFailed);
        EXPECT_FALSE(why.empty());
        ASSERT_EQ(d->size(), 1u);
        EXPECT_EQ(d->getInt("com.talmo.print.FinishingOptions"), 4);
        if (path.filename().string().find("entity") != std::string::npos) {
            EXPECT_EQ(why, "the document declares entities");
        }
    }
    EXPECT_GE(files, 20);
}

TEST(TpifImportHostile, NonRegularFilesAreRefusedWithoutBlocking)
{
    auto d = pl::makeDict();
    EXPECT_EQ(TPIFImportFileAtPath(tpiftest::dataPath("malformed"), d), kImportFileFailed);
    const auto fifo = std::filesystem::temp_directory_path() / "tpif-import-fifo";
    std::filesystem::remove(fifo);
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(TPIFImportFileAtPath(fifo.string(), d), kImportFileFailed);
    std::filesystem::remove(fifo);
    EXPECT_EQ(d->size(), 0u);
}

// The same content in other valid forms (data/valid/) still imports: the refusals above are
// about the defects, not about the encodings or the document type line.
TEST(TpifImportHostile, ValidEncodingsAndTheWritersDocumentTypeImport)
{
    TDPInitializeFromFile(std::string(TALMO_SOURCE_DIR) + "/resources/Device Profile.plist");
    for (const auto& e : std::filesystem::directory_iterator(tpiftest::dataPath("valid"))) {
        auto d = pl::makeDict();
        std::string why;
        EXPECT_EQ(TPIFImportFileAtPath(e.path().string(), d, &why), noErr) << e.path() << ": " << why;
        EXPECT_EQ(d->getString("com.talmo.print.JobNotesJobName"), "Caf\xC3\xA9") << e.path();
    }
}

} // namespace
