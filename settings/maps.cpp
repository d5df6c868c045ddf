#include "settings/settings.h"

#include <utility>

namespace talmo {

namespace {

InstalledFeatureHook& installedFeatureHook()
{
    static InstalledFeatureHook hook;
    return hook;
}

// The shared search of TicketToUI and LocalizedKeyForTicketValue: the 0-based index of the row
// where the walk stops (possibly the terminator).
size_t SearchRow(const SettingMap* map, int32_t value)
{
    // A map that starts with 0 (command-only menus such as the paper list menu) always
    // answers its first row; the requested value is deliberately not looked at.
    if (map[0].key && map[0].ticketValue == 0)
        return 0;
    size_t i = 0;
    for (; map[i].key; ++i) {
        const SettingMap& row = map[i];
        if (row.ticketValue == value && RowIsOffered(row))
            break;
        // An unmatched value falls back to the first row holding 0 ("Custom...").
        if (row.ticketValue == 0)
            break;
    }
    return i;
}

} // namespace

void SetInstalledFeatureHook(InstalledFeatureHook hook) { installedFeatureHook() = std::move(hook); }

bool InstalledFeatureState(const char* feature)
{
    const InstalledFeatureHook& hook = installedFeatureHook();
    if (!feature || !hook)
        return false;
    return hook(feature);
}

bool RowIsOffered(const SettingMap& row)
{
    return !row.installable || InstalledFeatureState(row.installable) == row.requiredState;
}

int32_t CountMaps(const SettingMap* map)
{
    if (!map)
        return 0;
    int32_t n = 0;
    while (map[n].key)
        ++n;
    return n;
}

int32_t UIToTicket(const SettingMap* map, int32_t item)
{
    if (item < 1 || item > CountMaps(map))
        return kNotSet;
    return map[item - 1].ticketValue;
}

int32_t TicketToUI(const SettingMap* map, int32_t value)
{
    if (!map)
        return -1;
    size_t row = SearchRow(map, value);
    return map[row].key ? static_cast<int32_t>(row + 1) : -1;
}

const char* LocalizedKeyForTicketValue(const SettingMap* map, int32_t value)
{
    if (!map)
        return nullptr;
    return map[SearchRow(map, value)].key;
}

const char* LocalizedKeyForPaperSizeTicketValue(const _PaperSizeSettingMap* map, int32_t value)
{
    if (!map)
        return nullptr;
    size_t i = 0;
    while (map[i].key && map[i].ticketValue != value && map[i].ticketValue != 0)
        ++i;
    return map[i].key;
}

} // namespace talmo
