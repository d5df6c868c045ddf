// A watermark file's bytes: every entry that is a dictionary is read into a record, written back
// into a dictionary (the glyph buffer sized from hostile counts), and drawn into a preview page
// (offsets, sizes, angles and scales as the file gives them).
#include "marking/marking.h"

#include <cstdlib>
#include <filesystem>
#include <memory>

namespace {

// Drawing a text watermark saves the record: into a private folder, never the user's.
const bool kPrivateHome = [] {
    static char folder[] = "/tmp/talmo-fuzz-watermark-XXXXXX";
    if (!::mkdtemp(folder) || ::setenv("XDG_DATA_HOME", folder, 1) != 0 || ::setenv("XDG_DATA_DIRS", folder, 1) != 0)
        std::abort();
    std::atexit([] {
        std::error_code ec;
        std::filesystem::remove_all(folder, ec);
    });
    return true;
}();

} // namespace

// fontconfig keeps its configuration and pango/GLib their type registries for the life of the
// process by design; drawing text makes them. Our own allocations stay checked.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig.so\n"
           "leak:libpango-1.0.so\n"
           "leak:libpangoft2-1.0.so\n"
           "leak:libpangocairo-1.0.so\n"
           "leak:libgobject-2.0.so\n"
           "leak:libglib-2.0.so\n";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    auto root = talmo::pl::as<talmo::pl::Dictionary>(
        talmo::pl::readPlist(std::string_view(reinterpret_cast<const char*>(data), size)));
    if (!root)
        return 0;
    for (const auto& [name, value] : *root) {
        auto entry = talmo::pl::as<talmo::pl::Dictionary>(value);
        if (!entry)
            continue;
        talmo::_WatermarkData record;
        talmo::loadWatermarkFields(*entry, record);
        record.isText = record.textString[0] != '\0';
        auto again = talmo::watermarkDictionary(record);
        (void)talmo::pl::writePlist(again);
        std::unique_ptr<talmo::MemoryConsumerInfo, void (*)(void*)> consumer(talmo::CreateMemoryConsumer(),
                                                                             talmo::MemoryConsumerReleaseInfo);
        (void)talmo::RenderWatermarkPDF(&record, 612, 792, *consumer);
    }
    return 0;
}
