// Shared scaffolding of the settings tests: the list of this module's maps and a private home
// with the input history helpers.
#pragma once

#include "tests/settings/prefs-fixture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace talmo::test {

inline std::string SettingsStringsPath()
{
    return std::string(TALMO_SOURCE_DIR) + "/resources/en.lproj/Localizable.d/settings.strings";
}

struct NamedMap {
    const char* name;
    const SettingMap* map;
};

inline const std::vector<NamedMap>& SettingsModuleMaps()
{
    // clang-format off
#define M(map) {#map, map}
    static const std::vector<NamedMap> maps = {
        M(_CoverOptionMap), M(_InsertOptionMap), M(_SavedJobSaveOptionRadioMap), M(_WatermarkMap),
        M(_WatermarkOptionsMap), M(_EnabledDisabledMap), M(_PageBordersMap), M(_BookletWatermarkBackgroundFormsMap),
        M(_PlexMap), M(_DuplexMap), M(_HighlightPrintingColorMap), M(_HighlightMappingColorMap),
        M(_HighlightMappingAlgorithmMap), M(_HighlightMismatchColorMap), M(_ImageShiftOptions1SidedMap),
        M(_ImageShiftOptions2SidedMap), M(_CoverSidesImagedMap), M(_WatermarkStringMap), M(_TrappingMap),
        M(_BlackOverprintMap), M(_TRCMap), M(_RGBSourceProfileMap), M(_CMYKSourceProfileMap),
        M(_GraySourceProfileMap), M(_DestinationProfileMap), M(_ObjectRenderingMap), M(_HalftoneScreenMap),
        M(_AntialiasingMap), M(_JobTypeMap), M(_JobFormatMap), M(_OutputColorMap), M(_OutputStapleOCTMap),
        M(_OutputStapleLCSSMap), M(_OutputStapleHCSSMap), M(_PunchNoneMap), M(_PunchMap), M(_OutputDestOCTMap),
        M(_OutputDestLCSSMap), M(_OutputDestHCSSMap), M(_OutputDestHCSS_BKMap), M(_ResolutionMap),
        M(_StockLibraryMap), M(_ComplexFoldMap), M(_ComplexBookletFoldMap), M(_HolePunchOptionsMap), M(_ZFoldMap),
        M(_NamedPaperPaperListMap),
    };
#undef M
    // clang-format on
    return maps;
}

// A private home (see PrefsHome) with the input history helpers.
class SettingsHome : public PrefsHome {
protected:
    const std::string& root() const { return root_; }
    std::string historyFile() const { return prefsFile(kInputHistoryFile); }

    // Stores `entries` under `key` in the input history file, as an earlier dialog would.
    void StoreHistory(const std::string& key, const std::vector<pl::ValuePtr>& entries)
    {
        pl::DictPtr prefs = CopyUserPreferences(kInputHistoryFile);
        ASSERT_TRUE(prefs);
        pl::ArrayPtr array = pl::makeArray();
        for (const pl::ValuePtr& v : entries)
            array->append(v);
        prefs->set(key, array);
        ASSERT_TRUE(WriteUserPreferences(kInputHistoryFile, prefs));
    }
};

} // namespace talmo::test
