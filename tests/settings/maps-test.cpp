// Setting map lookups and the content of the tables.
#include "settings/settings.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace talmo {
namespace {

struct Row {
    std::string key;
    int32_t value;
    uint32_t command = 0;
};

std::vector<Row> RowsOf(const SettingMap* map)
{
    std::vector<Row> rows;
    for (; map->key; ++map)
        rows.push_back({map->key, map->ticketValue, map->command});
    return rows;
}

bool operator==(const Row& a, const Row& b) { return a.key == b.key && a.value == b.value && a.command == b.command; }

void PrintTo(const Row& r, std::ostream* os) { *os << '"' << r.key << "\" = " << r.value << " cmd " << r.command; }

// Installs an installed-options hook for one test and removes it afterwards.
class InstalledOptions {
public:
    explicit InstalledOptions(std::set<std::string> installed)
    {
        SetInstalledFeatureHook(
            [installed = std::move(installed)](const std::string& f) { return installed.count(f) != 0; });
    }
    ~InstalledOptions() { SetInstalledFeatureHook(nullptr); }
};

// A map shaped like the stock description menu: the "Custom..." row holds 0.
const SettingMap kDescriptionLike[] = {
    {"PrinterDefault", kNotSet, 0, nullptr, false},
    {"Custom...", 0, 0, nullptr, false},
    {nullptr, 0, 0, nullptr, false},
};

// Rows that depend on installable options, and a later row holding the same value.
const SettingMap kInstallableMap[] = {
    {"PrinterDefault", kNotSet, 0, nullptr, false},
    {"StackerTray1", 5, 0, "StackerTray1Key", true},
    {"TopTray", 2, 0, "StackerTray1Key", false},
    {"StackerTray", 5, 0, nullptr, false},
    {nullptr, 0, 0, nullptr, false},
};

const SettingMap kEmpty[] = {{nullptr, 0, 0, nullptr, false}};

const SettingMap kFirstRowZeroWithoutMatch[] = {
    {"My Paper List", 0, 0, nullptr, false},
    {"Other", 7, 0, nullptr, false},
    {nullptr, 0, 0, nullptr, false},
};

TEST(SettingMapLookup, TicketToUIFindsTheOneBasedRowOrMinusOne)
{
    struct Case {
        const SettingMap* map;
        int32_t value;
        int32_t item;
    };
    const Case cases[] = {
        {_AntialiasingMap, 2, 3},       {_AntialiasingMap, 5, -1},
        {_AntialiasingMap, kNotSet, 1}, {_HalftoneScreenMap, 14, 7},
        {_CMYKSourceProfileMap, 3, 16}, {_WatermarkMap, -9, 6},
        {_OutputDestHCSS_BKMap, 1, 1}, // "TopTray" shares 1 with "Auto": the first row wins
        {kDescriptionLike, 7, 2},      // unmatched value falls back to the row holding 0
        {kDescriptionLike, kNotSet, 1}, {kEmpty, 1, -1},
    };
    for (const Case& c : cases)
        EXPECT_EQ(TicketToUI(c.map, c.value), c.item) << "value " << c.value;
}

TEST(SettingMapLookup, FirstRowHoldingZeroAnswersRowOneForAnyValue)
{
    for (int32_t value : {0, 1, 2, -1, kNotSet, 7}) {
        EXPECT_EQ(TicketToUI(_NamedPaperPaperListMap, value), 1) << value;
        EXPECT_STREQ(LocalizedKeyForTicketValue(_NamedPaperPaperListMap, value), "My Paper List");
        // Even when a later row would match exactly.
        EXPECT_EQ(TicketToUI(kFirstRowZeroWithoutMatch, 7), 1);
    }
}

TEST(SettingMapLookup, LocalizedKeyFollowsTheSameSearch)
{
    EXPECT_STREQ(LocalizedKeyForTicketValue(_AntialiasingMap, 2), "On");
    EXPECT_EQ(LocalizedKeyForTicketValue(_AntialiasingMap, 5), nullptr);
    EXPECT_STREQ(LocalizedKeyForTicketValue(kDescriptionLike, 7), "Custom...");
    EXPECT_STREQ(LocalizedKeyForTicketValue(_PlexMap, kNotSet), "PrinterDefault");
    EXPECT_EQ(LocalizedKeyForTicketValue(kEmpty, 0), nullptr);
    EXPECT_EQ(LocalizedKeyForTicketValue(nullptr, 0), nullptr);
    EXPECT_EQ(TicketToUI(nullptr, 0), -1);
}

TEST(SettingMapLookup, UIToTicketReadsRowItemMinusOneAndNeverPastTheEnd)
{
    EXPECT_EQ(UIToTicket(_AntialiasingMap, 1), kNotSet);
    EXPECT_EQ(UIToTicket(_HalftoneScreenMap, 2), 7);
    EXPECT_EQ(UIToTicket(_HalftoneScreenMap, 7), 14);
    EXPECT_EQ(UIToTicket(_CoverOptionMap, 1), 1);
    for (int32_t item : {0, -1, 8, INT32_MAX})
        EXPECT_EQ(UIToTicket(_HalftoneScreenMap, item), kNotSet) << item;
    EXPECT_EQ(UIToTicket(nullptr, 1), kNotSet);
}

TEST(SettingMapLookup, RowsOfUninstalledOptionsDoNotMatch)
{
    // Nothing installed: the row requiring the stacker is skipped, the later 5 matches.
    EXPECT_EQ(TicketToUI(kInstallableMap, 5), 4);
    EXPECT_EQ(TicketToUI(kInstallableMap, 2), 3);
    {
        InstalledOptions options({"StackerTray1Key"});
        EXPECT_EQ(TicketToUI(kInstallableMap, 5), 2);
        EXPECT_EQ(TicketToUI(kInstallableMap, 2), -1);
        EXPECT_STREQ(LocalizedKeyForTicketValue(kInstallableMap, 5), "StackerTray1");
    }
    EXPECT_FALSE(InstalledFeatureState("StackerTray1Key"));
    EXPECT_FALSE(InstalledFeatureState(nullptr));
}

TEST(SettingMapLookup, PaperSizeKeyStopsAtValueOrZero)
{
    const _PaperSizeSettingMap sizes[] = {
        {"PrinterDefault", kNotSet, 0, kNotSet, kNotSet, kNotSet, kNotSet},
        {"LetterStockSize", 1, 0, 21600, 27900, 612, 792},
        {"CustomStockSize", 0, 0, 0, 0, 0, 0},
        {"LegalStockSize", 2, 0, 21600, 35600, 612, 1008},
        {nullptr, 0, 0, 0, 0, 0, 0},
    };
    EXPECT_STREQ(LocalizedKeyForPaperSizeTicketValue(sizes, 1), "LetterStockSize");
    EXPECT_STREQ(LocalizedKeyForPaperSizeTicketValue(sizes, kNotSet), "PrinterDefault");
    EXPECT_STREQ(LocalizedKeyForPaperSizeTicketValue(sizes, 2), "CustomStockSize"); // 0 row comes first
    EXPECT_STREQ(LocalizedKeyForPaperSizeTicketValue(sizes + 3, 9), nullptr);
    EXPECT_EQ(LocalizedKeyForPaperSizeTicketValue(nullptr, 1), nullptr);
}

TEST(SettingMapTables, RowCountsAreAsPublished)
{
    struct Count {
        const char* name;
        const SettingMap* map;
        int32_t rows;
    };
    const Count counts[] = {
        {"_CoverOptionMap", _CoverOptionMap, 5},
        {"_InsertOptionMap", _InsertOptionMap, 2},
        {"_SavedJobSaveOptionRadioMap", _SavedJobSaveOptionRadioMap, 2},
        {"_WatermarkMap", _WatermarkMap, 6},
        {"_WatermarkOptionsMap", _WatermarkOptionsMap, 6},
        {"_EnabledDisabledMap", _EnabledDisabledMap, 2},
        {"_PageBordersMap", _PageBordersMap, 2},
        {"_BookletWatermarkBackgroundFormsMap", _BookletWatermarkBackgroundFormsMap, 3},
        {"_PlexMap", _PlexMap, 4},
        {"_DuplexMap", _DuplexMap, 3},
        {"_HighlightPrintingColorMap", _HighlightPrintingColorMap, 14},
        {"_HighlightMappingColorMap", _HighlightMappingColorMap, 16},
        {"_HighlightMappingAlgorithmMap", _HighlightMappingAlgorithmMap, 6},
        {"_HighlightMismatchColorMap", _HighlightMismatchColorMap, 4},
        {"_ImageShiftOptions1SidedMap", _ImageShiftOptions1SidedMap, 2},
        {"_ImageShiftOptions2SidedMap", _ImageShiftOptions2SidedMap, 10},
        {"_CoverSidesImagedMap", _CoverSidesImagedMap, 4},
        {"_WatermarkStringMap", _WatermarkStringMap, 4},
        {"_TrappingMap", _TrappingMap, 3},
        {"_BlackOverprintMap", _BlackOverprintMap, 3},
        {"_TRCMap", _TRCMap, 1},
        {"_RGBSourceProfileMap", _RGBSourceProfileMap, 6},
        {"_CMYKSourceProfileMap", _CMYKSourceProfileMap, 16},
        {"_GraySourceProfileMap", _GraySourceProfileMap, 2},
        {"_DestinationProfileMap", _DestinationProfileMap, 3},
        {"_ObjectRenderingMap", _ObjectRenderingMap, 7},
        {"_HalftoneScreenMap", _HalftoneScreenMap, 7},
        {"_AntialiasingMap", _AntialiasingMap, 3},
        {"_JobTypeMap", _JobTypeMap, 3},
        {"_JobFormatMap", _JobFormatMap, 5},
        {"_OutputColorMap", _OutputColorMap, 3},
        {"_OutputStapleOCTMap", _OutputStapleOCTMap, 2},
        {"_OutputStapleLCSSMap", _OutputStapleLCSSMap, 4},
        {"_OutputStapleHCSSMap", _OutputStapleHCSSMap, 5},
        {"_PunchNoneMap", _PunchNoneMap, 1},
        {"_PunchMap", _PunchMap, 2},
        {"_OutputDestOCTMap", _OutputDestOCTMap, 1},
        {"_OutputDestLCSSMap", _OutputDestLCSSMap, 3},
        {"_OutputDestHCSSMap", _OutputDestHCSSMap, 4},
        {"_OutputDestHCSS_BKMap", _OutputDestHCSS_BKMap, 4},
        {"_ResolutionMap", _ResolutionMap, 2},
        {"_StockLibraryMap", _StockLibraryMap, 4},
        {"_ComplexFoldMap", _ComplexFoldMap, 2},
        {"_ComplexBookletFoldMap", _ComplexBookletFoldMap, 2},
        {"_HolePunchOptionsMap", _HolePunchOptionsMap, 3},
        {"_ZFoldMap", _ZFoldMap, 2},
        {"_NamedPaperPaperListMap", _NamedPaperPaperListMap, 2},
    };
    for (const Count& c : counts)
        EXPECT_EQ(CountMaps(c.map), c.rows) << c.name;
    EXPECT_EQ(CountMaps(kEmpty), 0);
    EXPECT_EQ(CountMaps(nullptr), 0);
}

TEST(SettingMapTables, PublishedRowsAreExact)
{
    const int32_t D = kNotSet;
    struct Table {
        const char* name;
        const SettingMap* map;
        std::vector<Row> rows;
    };
    const std::vector<Table> tables = {
        {"_AntialiasingMap", _AntialiasingMap, {{"PrinterDefault", D}, {"Off", 1}, {"On", 2}}},
        {"_OutputColorMap", _OutputColorMap, {{"PrinterDefault", D}, {"Output Grayscale", 1}, {"Output Color", 2}}},
        {"_EnabledDisabledMap", _EnabledDisabledMap, {{"Enabled", 1}, {"Disabled", 2}}},
        {"_PageBordersMap", _PageBordersMap, {{"No Page Borders", 1}, {"Draw Page Borders", 2}}},
        {"_JobTypeMap", _JobTypeMap, {{"Normal", 1}, {"SavedJob", 3}, {"BackgroundForms", 9}}},
        {"_JobFormatMap",
         _JobFormatMap,
         {{"PrinterDefault", D},
          {"SinglePageTIFF", 1},
          {"MultiPageTIFF", 2},
          {"FastReprint", 4},
          {"FastReprintDRI", 5}}},
        {"_PlexMap", _PlexMap, {{"PrinterDefault", D}, {"Simplex", 1}, {"Duplex", 2}, {"DuplexShort", 3}}},
        {"_DuplexMap", _DuplexMap, {{"Simplex", 1}, {"Duplex", 2}, {"DuplexShort", 3}}},
        {"_CoverOptionMap",
         _CoverOptionMap,
         {{"No Covers", 1},
          {"Front Cover Only", 2},
          {"Back Cover Only", 3},
          {"Same Covers", 4},
          {"Different Covers", 5}}},
        {"_StockLibraryMap",
         _StockLibraryMap,
         {{"SetupStockLibrary", 1, FourCC("Slib")},
          {"CustomName", 3, FourCC("SlCn")},
          {"-", 4},
          {"StockLibraryClear", 5, FourCC("SlCl")}}},
        {"_HalftoneScreenMap",
         _HalftoneScreenMap,
         {{"PrinterDefault", D},
          {"150 Dot", 7},
          {"200 Dot", 6},
          {"200 Line", 8},
          {"300 Dot", 11},
          {"600 Dot", 12},
          {"Stochastic", 14}}},
        {"_ObjectRenderingMap",
         _ObjectRenderingMap,
         {{"PrinterDefault", D},
          {"Saturation", 1},
          {"Relative Colorimetric", 2},
          {"Absolute Colorimetric", 3},
          {"Perceptual", 4},
          {"Pure", 5},
          {"Automatic", 6}}},
        {"_NamedPaperPaperListMap",
         _NamedPaperPaperListMap,
         {{"My Paper List", 0, FourCC("Tmpl")}, {"Printer Paper List", 0, FourCC("Tppl")}}},
        {"_ResolutionMap", _ResolutionMap, {{"PrinterDefault", D}, {"600 x 600 Resolution", 2}}},
        {"_TRCMap", _TRCMap, {{"PrinterDefault", D}}},
        {"_TrappingMap", _TrappingMap, {{"PrinterDefault", D}, {"On", 1}, {"Off", 2}}},
        {"_BlackOverprintMap", _BlackOverprintMap, {{"PrinterDefault", D}, {"On", 1}, {"Off", 2}}},
        {"_RGBSourceProfileMap",
         _RGBSourceProfileMap,
         {{"PrinterDefault", D},
          {"Talmo Evenhue Mod RGB", 1},
          {"Talmo Evenhue Mode RGB Gamma=1", 2},
          {"Adobe RGB", 6},
          {"sRGB", 4},
          {"Custom...", 5}}},
        {"_CMYKSourceProfileMap",
         _CMYKSourceProfileMap,
         {{"PrinterDefault", D},
          {"Native", 1},
          {"Swop CMYK", 2},
          {"Swop Plus CMYK", 15},
          {"Commercial CMYK", 14},
          {"FOGRA Gloss Coated CMYK", 4},
          {"FOGRA Matte Coated CMYK", 5},
          {"FOGRA Uncoated CMYK", 6},
          {"FOGRA Web Offset CMYK", 12},
          {"FOGRA Plus CMYK", 13},
          {"Japan Color 2001 Plus CMYK", 7},
          {"Japan Color 2001 (Type 1:Art) CMYK", 8},
          {"Japan Color 2001 (Type 2:Matte) CMYK", 9},
          {"Japan Color 2001 (Type 3:Coated) CMYK", 10},
          {"Japan Color 2001 (Type 4:Uncoated) CMYK", 11},
          {"Custom...", 3}}},
        {"_GraySourceProfileMap", _GraySourceProfileMap, {{"PrinterDefault", D}, {"Custom...", 1}}},
        {"_DestinationProfileMap",
         _DestinationProfileMap,
         {{"PrinterDefault", D}, {"System Specified", 1}, {"Custom...", 2}}},
        {"_CoverSidesImagedMap",
         _CoverSidesImagedMap,
         {{"CoverBlankorPreprinted", 1}, {"CoverPrintSide1", 2}, {"CoverPrintSide2", 3}, {"CoverPrintSide1And2", 4}}},
        {"_ImageShiftOptions1SidedMap", _ImageShiftOptions1SidedMap, {{"PrinterDefault", D}, {"Independent", 1}}},
        {"_ImageShiftOptions2SidedMap",
         _ImageShiftOptions2SidedMap,
         {{"PrinterDefault", D},
          {"Independent", 1},
          {"MirrorX", 3},
          {"MirrorY", 4},
          {"MirrorBoth", 5},
          {"MirrorXTandemY", 6},
          {"MirrorYTandemX", 7},
          {"TandemX", 8},
          {"TandemY", 9},
          {"TandemBoth", 10}}},
        {"_WatermarkMap",
         _WatermarkMap,
         {{"NoWatermark", 1, FourCC("TWmX")},
          {"-", -5},
          {"Options", -6, FourCC("TWmO")},
          {"New...", -7, FourCC("TWmN")},
          {"Edit...", -8, FourCC("TWmE")},
          {"Delete", -9, FourCC("TWmD")}}},
        {"_WatermarkOptionsMap",
         _WatermarkOptionsMap,
         {{"WatermarkBackground", 1},
          {"WatermarkBlend", 2},
          {"WatermarkForeground", 3},
          {"-", -5},
          {"WatermarkPrintOnAllPages", 4},
          {"WatermarmPrintOnPage1Only", 5}}},
        {"_WatermarkStringMap",
         _WatermarkStringMap,
         {{"NoWatermark", 1}, {"DraftWatermark", -2}, {"ConfidentialWatermark", -3}, {"CopyWatermark", -4}}},
        {"_OutputDestOCTMap", _OutputDestOCTMap, {{"OCT", 3}}},
        {"_OutputDestLCSSMap", _OutputDestLCSSMap, {{"Auto", 1}, {"TopTray", 2}, {"StackerTray", 4}}},
        {"_OutputDestHCSSMap",
         _OutputDestHCSSMap,
         {{"Auto", 1}, {"TopTray", 2}, {"StackerTray1", 5}, {"StackerTray2", 6}}},
        {"_OutputDestHCSS_BKMap",
         _OutputDestHCSS_BKMap,
         {{"Auto", 1}, {"TopTray", 1}, {"StackerTray", 4}, {"BookletMakerBin", 7}}},
        {"_OutputStapleOCTMap", _OutputStapleOCTMap, {{"Uncollated", 1}, {"Collated", 2}}},
        {"_OutputStapleLCSSMap",
         _OutputStapleLCSSMap,
         {{"Uncollated", 1}, {"Collated", 2}, {"Collated, 1 Staple", 3}, {"Collated, 2 Staples", 4}}},
        {"_OutputStapleHCSSMap",
         _OutputStapleHCSSMap,
         {{"Uncollated", 1},
          {"Collated", 2},
          {"Collated, 1 Staple", 3},
          {"Collated, 2 Staples", 4},
          {"Collated, 4 Staples", 5}}},
        {"_PunchNoneMap", _PunchNoneMap, {{"Off", 1}}},
        {"_PunchMap", _PunchMap, {{"Off", 1}, {"HolePunch", 2}}},
    };
    for (const Table& t : tables)
        EXPECT_EQ(RowsOf(t.map), t.rows) << t.name;
}

TEST(SettingMapTables, LabelKeysOfTheFinishingMapsAreThePanelsOwn)
{
    auto keys = [](const SettingMap* map) {
        std::vector<std::string> k;
        for (; map->key; ++map)
            k.push_back(map->key);
        return k;
    };
    EXPECT_EQ(keys(_HolePunchOptionsMap), (std::vector<std::string>{"2HolePunch", "3HolePunch", "4HolePunch"}));
    EXPECT_EQ(keys(_ZFoldMap), (std::vector<std::string>{"Left Bind", "Right Bind"}));
    EXPECT_EQ(keys(_ComplexFoldMap), (std::vector<std::string>{"Print Inside", "Print Outside"}));
    EXPECT_EQ(keys(_ComplexBookletFoldMap), (std::vector<std::string>{"BiFoldNoStaple", "BiFoldStaple"}));
    // The Z-fold rows carry the binding edges the finishing summary names.
    EXPECT_EQ(UIToTicket(_ZFoldMap, 1), 38);
    EXPECT_EQ(UIToTicket(_ZFoldMap, 2), 39);
}

TEST(SettingMapTables, EveryRowValueFindsARow)
{
    // A 0 row ends every search, so one hidden in the middle of an ordinary map would make
    // the rows after it unreachable.
    const SettingMap* maps[] = {_CoverOptionMap,
                                _InsertOptionMap,
                                _SavedJobSaveOptionRadioMap,
                                _WatermarkMap,
                                _WatermarkOptionsMap,
                                _BookletWatermarkBackgroundFormsMap,
                                _HighlightPrintingColorMap,
                                _HighlightMappingColorMap,
                                _HighlightMappingAlgorithmMap,
                                _HighlightMismatchColorMap,
                                _ComplexFoldMap,
                                _ComplexBookletFoldMap,
                                _HolePunchOptionsMap,
                                _StockLibraryMap};
    for (const SettingMap* map : maps)
        for (int32_t i = 1; i <= CountMaps(map); ++i)
            EXPECT_EQ(TicketToUI(map, UIToTicket(map, i)) > 0, true) << map[i - 1].key;
}

} // namespace
} // namespace talmo
