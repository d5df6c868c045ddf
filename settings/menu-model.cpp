#include "settings/settings.h"

#include "platform/bundle.h"

#include <algorithm>

namespace talmo {

const MenuItem* MenuModel::item(int32_t index) const
{
    if (index < 1 || index > count())
        return nullptr;
    return &items[static_cast<size_t>(index - 1)];
}

int32_t PopulateMenuFromMap(const Bundle& bundle, MenuModel& menu, const SettingMap* map, JobContext context,
                            uint32_t command)
{
    int32_t rows = 0;
    for (const SettingMap* row = map; row && row->key; ++row) {
        ++rows;
        if (!RowIsOffered(*row))
            continue;
        MenuItem item;
        item.command = command ? command : row->command;
        item.reference = row->ticketValue;
        if (std::string_view(row->key) == "-") {
            item.separator = true;
            item.label = "-";
        } else {
            const char* key = row->key;
            if (row->ticketValue == kNotSet)
                key = context == kJobContextJob ? "PrinterDefault" : "UseJobSetting";
            item.label = bundle.localizedString(key);
        }
        menu.items.push_back(std::move(item));
    }
    menu.map = map;
    return rows;
}

int32_t PopulatePopupButtonFromMap(const Bundle& bundle, PopupButtonModel& popup, const SettingMap* map,
                                   JobContext context, uint32_t command)
{
    popup.menu.items.clear();
    int32_t count = PopulateMenuFromMap(bundle, popup.menu, map, context, command);
    popup.maximum = count;
    return count;
}

int32_t PopulatePopupButtonFromMapAndHistory(const Bundle& bundle, PopupButtonModel& popup, const SettingMap* map,
                                             JobContext context, std::optional<std::string_view> historyKey,
                                             int32_t insertPosition, uint32_t historyCommand, uint32_t mapCommand)
{
    popup.menu.items.clear();
    int32_t count = PopulateMenuFromMap(bundle, popup.menu, map, context, mapCommand);
    if (historyKey) {
        // A position past the end appends; a negative one counts as the front.
        size_t at = static_cast<size_t>(std::clamp<int32_t>(insertPosition, 0, popup.menu.count()));
        for (const std::string& text : ReadInputHistory(*historyKey)) {
            MenuItem item;
            item.label = text;
            item.command = historyCommand;
            item.history = true;
            popup.menu.items.insert(popup.menu.items.begin() + static_cast<std::ptrdiff_t>(at++), std::move(item));
            ++count;
        }
    }
    popup.maximum = count;
    return count;
}

bool SetPopupButtonToTicketValue(PopupButtonModel& popup, int32_t value)
{
    for (int32_t i = 1; i <= popup.menu.count(); ++i) {
        if (popup.menu.item(i)->reference == value) {
            popup.value = i;
            return true;
        }
    }
    return false;
}

int32_t GetPopupButtonTicketValue(const PopupButtonModel& popup)
{
    const MenuItem* selected = popup.menu.item(popup.value);
    return selected ? selected->reference : kNotSet;
}

} // namespace talmo
