#include "ticket/ticket.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>

using namespace talmo;

namespace {

// The keys of every English fragment (the bundle build concatenates them), with the fragment
// that defines each. Only the `"key" = "text";` lines matter here.
std::map<std::string, std::set<std::string>> englishKeys()
{
    std::map<std::string, std::set<std::string>> keys;
    const std::filesystem::path dir = std::filesystem::path(TALMO_SOURCE_DIR) / "resources/en.lproj/Localizable.d";
    const std::regex entry(R"re(^"((?:[^"\\]|\\.)*)"\s*=\s*"(?:[^"\\]|\\.)*"\s*;)re");
    for (const auto& file : std::filesystem::directory_iterator(dir)) {
        if (file.path().extension() != ".strings")
            continue;
        std::ifstream in(file.path());
        for (std::string line; std::getline(in, line);) {
            std::smatch m;
            if (std::regex_search(line, m, entry))
                keys[std::regex_replace(m[1].str(), std::regex(R"(\\(.))"), "$1")].insert(
                    file.path().filename().string());
        }
    }
    return keys;
}

} // namespace

TEST(StockStrings, EveryKeyOfTheStockTablesAndSummaryHasEnglishText)
{
    const auto keys = englishKeys();
    std::set<std::string> needed = {"StockName", "StockSize",      "StockColor",    "StockType",         "StockWeight",
                                    "gsm",       "PrinterDefault", "UseJobSetting", "StockTypePrecutTab"};
    for (const SettingMap* map :
         {_StockColorMap, _CompleteStockColorMap, _StockTypeMap, _CompleteStockTypeMap, _StockPunchedMap,
          _SidesCoatedMap, _CoatingTypeMap, _FinishMap, _GrainMap, _WeightMap, _StockDescriptionMap, _StockSizeMap})
        for (const SettingMap* row = map; row->key; ++row)
            needed.insert(row->key);
    for (const auto* row = CompleteStockSizeMap; row->key; ++row)
        needed.insert(row->key);

    for (const auto& key : needed)
        EXPECT_TRUE(keys.count(key)) << "no English text for " << key;
}
