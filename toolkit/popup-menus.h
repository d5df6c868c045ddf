// Popup buttons and menus built from setting maps, on Qt. The rules (which rows, which labels,
// the count, where history goes) are the settings menu model's; these functions build that
// model and mirror it into a QComboBox or a QMenu.
//
// A popup's items are changed only through these functions: the popup keeps its model (the
// map, the control maximum and every item's reference value) beside it, and an item's
// reference is also its Qt::UserRole data.
#pragma once

#include "settings/settings.h"

#include <QString>
#include <Qt>

#include <optional>
#include <string_view>

class QComboBox;
class QObject;
class QMenu;

namespace talmo {

// Item data roles of popups built here.
inline constexpr int kItemReferenceRole = Qt::UserRole;     // int32 ticket value
inline constexpr int kItemCommandRole = Qt::UserRole + 1;   // uint32 command, 0 for none
inline constexpr int kItemIsHistoryRole = Qt::UserRole + 2; // true for input history items

// Appends the map's offered rows to `menu` as actions (separators for "-" rows), each carrying
// its command (sent to the menu's window when triggered) and its ticket value as data. Returns
// the number of rows of the map, skipped rows included.
int32_t PopulateMenuFromMap(const Bundle& bundle, QMenu* menu, const SettingMap* map, JobContext context,
                            uint32_t command);

// Empties the popup, fills it from the map and sets its maximum to the returned count.
int32_t PopulatePopupButtonFromMap(const Bundle& bundle, QComboBox* popup, const SettingMap* map, JobContext context,
                                   uint32_t command);
// As PopulatePopupButtonFromMap, then the input history under `historyKey` goes in after item
// `insertPosition`, each history string adding one to the count and the maximum.
int32_t PopulatePopupButtonFromMapAndHistory(const Bundle& bundle, QComboBox* popup, const SettingMap* map,
                                             JobContext context, std::optional<std::string_view> historyKey,
                                             int32_t insertPosition, uint32_t historyCommand, uint32_t mapCommand);

// Selects the first item (from 1) whose reference equals `value`; false, selection kept, when
// there is none or the popup was not built from a map.
bool SetPopupButtonToTicketValue(QComboBox* popup, int32_t value);
// The reference of the selected item; kNotSet when nothing valid is selected.
int32_t GetPopupButtonTicketValue(const QComboBox* popup);

// The map a popup or menu was built from (its own reference), or null.
const SettingMap* GetPopupMap(const QObject* popupOrMenu);
// The control maximum set by the populate functions; 0 for a popup not built here.
int32_t GetPopupButtonMaximum(const QComboBox* popup);

} // namespace talmo
