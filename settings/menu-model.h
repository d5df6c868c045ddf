// A toolkit-free model of the menus and popup buttons that the panels build from setting
// maps. The widgets mirror it: an item's reference is the ticket value it stands for, and the
// menu's own reference is the map it was built from.
#pragma once

#include "settings/maps.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace talmo {

class Bundle;

struct MenuItem {
    std::string label;
    uint32_t command = 0;
    int32_t reference = 0; // ticket value; history items carry 0
    bool separator = false;
    bool history = false; // an input history string, not a row of the map
};

struct MenuModel {
    std::vector<MenuItem> items;
    const SettingMap* map = nullptr; // the menu's own reference (item 0)

    int32_t count() const { return static_cast<int32_t>(items.size()); }
    // 1-based, as the platform's menus count; null outside 1..count().
    const MenuItem* item(int32_t index) const;
};

struct PopupButtonModel {
    MenuModel menu;
    int32_t maximum = 0; // control maximum
    int32_t value = 0;   // selected item, 1-based; 0 when nothing is selected
};

// Appends an item per offered row; returns the number of rows of the map, hidden rows
// included (callers use it as the control maximum). The printer-default row is labelled
// "PrinterDefault" at job level and "UseJobSetting" for a page range. A non-zero `command`
// replaces every row's own command.
int32_t PopulateMenuFromMap(const Bundle& bundle, MenuModel& menu, const SettingMap* map, JobContext context,
                            uint32_t command);
// Empties the popup's menu, fills it from the map and sets the maximum to the returned count.
int32_t PopulatePopupButtonFromMap(const Bundle& bundle, PopupButtonModel& popup, const SettingMap* map,
                                   JobContext context, uint32_t command);
// As PopulatePopupButtonFromMap, then inserts the input history stored under `historyKey`
// after item `insertPosition` (0 puts it first), in history order, each with `historyCommand`.
// Every history string adds one to the count and the maximum.
int32_t PopulatePopupButtonFromMapAndHistory(const Bundle& bundle, PopupButtonModel& popup, const SettingMap* map,
                                             JobContext context, std::optional<std::string_view> historyKey,
                                             int32_t insertPosition, uint32_t historyCommand, uint32_t mapCommand);
// Selects the first item (from 1) whose reference equals `value`; false (selection kept)
// when there is none.
bool SetPopupButtonToTicketValue(PopupButtonModel& popup, int32_t value);
// Reference of the selected item; kNotSet (printer default) when nothing valid is selected.
int32_t GetPopupButtonTicketValue(const PopupButtonModel& popup);

} // namespace talmo
