// The watermark menu of the Booklet and Watermark panel, toolkit-free: the rows of
// _WatermarkMap with the watermark names after "NoWatermark" and the "Options" submenu.
#pragma once

#include "marking/watermark.h"

#include <string>
#include <vector>

namespace talmo {

struct WatermarkMenuItem {
    std::string label;
    uint32_t command = 0;
    int32_t reference = 0; // the row's value; a watermark name's index in listOfWatermarks()
    bool separator = false;
    std::vector<WatermarkMenuItem> submenu;
};

struct WatermarkMenu {
    std::vector<WatermarkMenuItem> items;
    const SettingMap* map = nullptr; // the menu's own reference
};

// Empties the menu and fills it: the map's localized rows with their values as references,
// every name of listOfWatermarks() right after the first row (command "TWmW", reference its
// list index), and the "Options" row (reference -6) carrying _WatermarkOptionsMap as submenu.
void PopulateWatermarkMenuFromMapAndHistory(const Localizer& localize, WatermarkMenu& menu, const SettingMap* map);
void PopulateWatermarkMenuFromMapAndHistory(const Bundle& bundle, WatermarkMenu& menu, const SettingMap* map);

} // namespace talmo
