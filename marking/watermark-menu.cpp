#include "marking/watermark-menu.h"

#include <cstring>

namespace talmo {

namespace {

constexpr int32_t kOptionsReference = -6;

std::vector<WatermarkMenuItem> rowsOf(const Localizer& localize, const SettingMap* map)
{
    std::vector<WatermarkMenuItem> items;
    for (const SettingMap* row = map; row && row->key; ++row) {
        WatermarkMenuItem item;
        item.separator = std::strcmp(row->key, "-") == 0;
        item.label = item.separator ? std::string("-") : localize(row->key);
        item.command = row->command;
        item.reference = row->ticketValue;
        items.push_back(std::move(item));
    }
    return items;
}

} // namespace

void PopulateWatermarkMenuFromMapAndHistory(const Localizer& localize, WatermarkMenu& menu, const SettingMap* map)
{
    menu.items = rowsOf(localize, map);
    menu.map = map;
    if (menu.items.empty())
        return;
    const auto& names = listOfWatermarks();
    std::vector<WatermarkMenuItem> named;
    named.reserve(names.size());
    for (size_t i = 0; i < names.size(); ++i)
        named.push_back({names[i], kWatermarkNameCommand, int32_t(i), false, {}});
    menu.items.insert(menu.items.begin() + 1, named.begin(), named.end());
    for (auto& item : menu.items)
        if (item.reference == kOptionsReference && !item.separator)
            item.submenu = rowsOf(localize, _WatermarkOptionsMap);
}

void PopulateWatermarkMenuFromMapAndHistory(const Bundle& bundle, WatermarkMenu& menu, const SettingMap* map)
{
    PopulateWatermarkMenuFromMapAndHistory([&](std::string_view key) { return bundle.localizedString(key); }, menu,
                                           map);
}

} // namespace talmo
