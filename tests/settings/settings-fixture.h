// Shared scaffolding of the settings tests: a private home for preference files and the list
// of this module's maps.
#pragma once

#include "settings/settings.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
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
    static const std::vector<NamedMap> maps = {
        {"_CoverOptionMap", _CoverOptionMap},
        {"_InsertOptionMap", _InsertOptionMap},
        {"_SavedJobSaveOptionRadioMap", _SavedJobSaveOptionRadioMap},
        {"_WatermarkMap", _WatermarkMap},
        {"_WatermarkOptionsMap", _WatermarkOptionsMap},
        {"_EnabledDisabledMap", _EnabledDisabledMap},
        {"_PageBordersMap", _PageBordersMap},
        {"_BookletWatermarkBackgroundFormsMap", _BookletWatermarkBackgroundFormsMap},
        {"_PlexMap", _PlexMap},
        {"_DuplexMap", _DuplexMap},
        {"_HighlightPrintingColorMap", _HighlightPrintingColorMap},
        {"_HighlightMappingColorMap", _HighlightMappingColorMap},
        {"_HighlightMappingAlgorithmMap", _HighlightMappingAlgorithmMap},
        {"_HighlightMismatchColorMap", _HighlightMismatchColorMap},
        {"_ImageShiftOptions1SidedMap", _ImageShiftOptions1SidedMap},
        {"_ImageShiftOptions2SidedMap", _ImageShiftOptions2SidedMap},
        {"_CoverSidesImagedMap", _CoverSidesImagedMap},
        {"_WatermarkStringMap", _WatermarkStringMap},
        {"_TrappingMap", _TrappingMap},
        {"_BlackOverprintMap", _BlackOverprintMap},
        {"_TRCMap", _TRCMap},
        {"_RGBSourceProfileMap", _RGBSourceProfileMap},
        {"_CMYKSourceProfileMap", _CMYKSourceProfileMap},
        {"_GraySourceProfileMap", _GraySourceProfileMap},
        {"_DestinationProfileMap", _DestinationProfileMap},
        {"_ObjectRenderingMap", _ObjectRenderingMap},
        {"_HalftoneScreenMap", _HalftoneScreenMap},
        {"_AntialiasingMap", _AntialiasingMap},
        {"_JobTypeMap", _JobTypeMap},
        {"_JobFormatMap", _JobFormatMap},
        {"_OutputColorMap", _OutputColorMap},
        {"_OutputStapleOCTMap", _OutputStapleOCTMap},
        {"_OutputStapleLCSSMap", _OutputStapleLCSSMap},
        {"_OutputStapleHCSSMap", _OutputStapleHCSSMap},
        {"_PunchNoneMap", _PunchNoneMap},
        {"_PunchMap", _PunchMap},
        {"_OutputDestOCTMap", _OutputDestOCTMap},
        {"_OutputDestLCSSMap", _OutputDestLCSSMap},
        {"_OutputDestHCSSMap", _OutputDestHCSSMap},
        {"_OutputDestHCSS_BKMap", _OutputDestHCSS_BKMap},
        {"_ResolutionMap", _ResolutionMap},
        {"_StockLibraryMap", _StockLibraryMap},
        {"_ComplexFoldMap", _ComplexFoldMap},
        {"_ComplexBookletFoldMap", _ComplexBookletFoldMap},
        {"_HolePunchOptionsMap", _HolePunchOptionsMap},
        {"_ZFoldMap", _ZFoldMap},
        {"_NamedPaperPaperListMap", _NamedPaperPaperListMap},
    };
    return maps;
}

// HOME and XDG_CONFIG_HOME point into a fresh folder for the test, so preference files never
// touch the real user's.
class SettingsHome : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::string templ = std::filesystem::temp_directory_path().string() + "/talmo-settings-XXXXXX";
        ASSERT_NE(::mkdtemp(templ.data()), nullptr);
        root_ = templ;
        for (const char* v : {"HOME", "XDG_CONFIG_HOME"}) {
            const char* old = std::getenv(v);
            saved_.push_back({v, old ? std::optional<std::string>(old) : std::nullopt});
        }
        ::setenv("HOME", (root_ + "/home").c_str(), 1);
        ::setenv("XDG_CONFIG_HOME", (root_ + "/config").c_str(), 1);
    }

    void TearDown() override
    {
        for (const auto& [name, value] : saved_) {
            if (value)
                ::setenv(name, value->c_str(), 1);
            else
                ::unsetenv(name);
        }
        std::error_code ec;
        std::filesystem::remove_all(root_, ec);
    }

    const std::string& root() const { return root_; }
    std::string historyFile() const { return root_ + "/config/talmo/" + kInputHistoryFile; }

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

private:
    std::string root_;
    std::vector<std::pair<const char*, std::optional<std::string>>> saved_;
};

} // namespace talmo::test
