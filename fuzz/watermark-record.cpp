// A watermark file's bytes: every entry that is a dictionary is read into a record, and the
// record is written back into a dictionary (the glyph buffer sized from hostile counts).
#include "marking/marking.h"

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
    }
    return 0;
}
