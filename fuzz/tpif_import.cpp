// Fuzz bytes into the TPIF importer: the bounded reader, then every feature of the shipped
// device profile. Whatever the bytes, the import either refuses the file or yields a
// dictionary that the property-list writer can write and read back.
#include "device/device.h"
#include "platform/plist.h"
#include "tpif/tpif.h"

#include <cstdint>
#include <string>

namespace {

void check(bool ok)
{
    if (!ok)
        __builtin_trap();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace talmo;
    static const bool loaded = TDPInitializeFromFile(std::string(TALMO_SOURCE_DIR) + "/resources/Device Profile.plist");
    check(loaded);
    TPIFDocument doc = TPIFReadDocumentFromMemory(reinterpret_cast<const char*>(data), size);
    if (!doc)
        return 0;
    auto dictionary = pl::makeDict();
    check(TPIFImportDocument(doc.get(), dictionary) == noErr);
    check(dictionary->getInt("com.talmo.print.FinishingOptions").has_value());
    pl::ParseResult r;
    auto back = pl::readPlist(pl::writePlist(dictionary), &r);
    check(back && pl::equal(back, dictionary));
    return 0;
}
