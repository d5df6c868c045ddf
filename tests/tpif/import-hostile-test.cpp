// Hostile TPIF files: every file of data/malformed/ (named by its defect) is refused with
// kImportFileFailed and leaves the dictionary as it was; documents declaring entities are
// refused before anything is expanded.
#include "tpif-test-util.h"

#include "device/device.h"

#include <filesystem>

using namespace talmo;

namespace {

std::vector<std::filesystem::path> malformedFiles()
{
    std::vector<std::filesystem::path> out;
    for (const auto& e : std::filesystem::directory_iterator(tpiftest::dataPath("malformed")))
        out.push_back(e.path());
    std::sort(out.begin(), out.end());
    return out;
}

TEST(TpifImportHostile, EveryMalformedFileIsRefusedAndChangesNothing)
{
    TDPInitializeFromFile(std::string(TALMO_SOURCE_DIR) + "/resources/Device Profile.plist");
    const auto files = malformedFiles();
    ASSERT_GE(files.size(), 20u);
    for (const auto& path : files) {
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

// The same content in other valid forms still imports: the refusals above are about the
// defects, not about the encodings or the document type line.
TEST(TpifImportHostile, ValidEncodingsAndTheWritersDocumentTypeImport)
{
    TDPInitializeFromFile(std::string(TALMO_SOURCE_DIR) + "/resources/Device Profile.plist");
    const std::string body = "<tpif><tpif-operation-attributes><job-name syntax=\"name\">Caf\xC3\xA9</job-name>"
                             "</tpif-operation-attributes></tpif>";
    std::u16string wide = u"<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n<tpif><tpif-operation-attributes>"
                          u"<job-name syntax=\"name\">Caf\u00e9</job-name></tpif-operation-attributes></tpif>";
    std::string utf16 = "\xFF\xFE";
    for (char16_t c : wide) {
        utf16 += static_cast<char>(c & 0xFF);
        utf16 += static_cast<char>(c >> 8);
    }
    const std::string latin1 = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<tpif><tpif-operation-attributes>"
                               "<job-name syntax=\"name\">Caf\xE9</job-name></tpif-operation-attributes></tpif>";
    const std::string doctype = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE tpif SYSTEM "
                                "\"tpif-v02025.dtd\">\n" +
                                body;
    for (const std::string& text : {body, utf16, latin1, doctype}) {
        std::string why;
        TPIFDocument doc = TPIFReadDocumentFromMemory(text.data(), text.size(), &why);
        ASSERT_TRUE(doc) << why;
        auto d = pl::makeDict();
        EXPECT_EQ(TPIFImportDocument(doc.get(), d), noErr);
        EXPECT_EQ(d->getString("com.talmo.print.JobNotesJobName"), "Caf\xC3\xA9");
    }
}

} // namespace
