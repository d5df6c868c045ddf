#include "toolkit/popup-menus.h"

#include "toolkit/events.h"

#include <QComboBox>
#include <QMenu>

namespace talmo {

namespace {

// The model a popup or menu was built from, kept as a child so that it lives and dies with the
// widget (a typed object, not a pointer hidden in a property).
class PopupState : public QObject {
public:
    using QObject::QObject;
    PopupButtonModel model;
};

PopupState* findState(const QObject* owner)
{
    if (!owner)
        return nullptr;
    for (QObject* child : owner->children())
        if (auto* state = dynamic_cast<PopupState*>(child))
            return state;
    return nullptr;
}

PopupState* stateFor(QComboBox* popup)
{
    if (PopupState* state = findState(popup))
        return state;
    auto* state = new PopupState(popup);
    // Items that carry a command send it to their window when chosen, as menu items do.
    QObject::connect(popup, &QComboBox::activated, state, [popup](int index) {
        if (uint32_t command = popup->itemData(index, kItemCommandRole).toUInt())
            SendCommand(popup->window(), command);
    });
    return state;
}

void mirrorInto(QComboBox* popup, const MenuModel& menu)
{
    popup->clear();
    for (const MenuItem& item : menu.items) {
        const int index = popup->count();
        if (item.separator)
            popup->insertSeparator(index);
        else
            popup->addItem(QString::fromStdString(item.label));
        popup->setItemData(index, item.reference, kItemReferenceRole);
        popup->setItemData(index, uint(item.command), kItemCommandRole);
        popup->setItemData(index, item.history, kItemIsHistoryRole);
    }
}

} // namespace

int32_t PopulateMenuFromMap(const Bundle& bundle, QMenu* menu, const SettingMap* map, JobContext context,
                            uint32_t command)
{
    MenuModel model;
    const int32_t count = PopulateMenuFromMap(bundle, model, map, context, command);
    if (!menu)
        return count;
    QWidget* window = menu->parentWidget() ? menu->parentWidget()->window() : menu;
    for (const MenuItem& item : model.items) {
        QAction* action = nullptr;
        if (item.separator)
            action = menu->addSeparator();
        else if (item.command) {
            action = CommandAction(QString::fromStdString(item.label), item.command, window);
            action->setParent(menu); // the menu's own, so that clearing the menu deletes it
            menu->addAction(action);
        } else
            action = menu->addAction(QString::fromStdString(item.label));
        action->setData(item.reference);
    }
    PopupState* state = findState(menu);
    if (!state)
        state = new PopupState(menu);
    state->model.menu.map = map;
    return count;
}

int32_t PopulatePopupButtonFromMap(const Bundle& bundle, QComboBox* popup, const SettingMap* map, JobContext context,
                                   uint32_t command)
{
    if (!popup)
        return CountMaps(map);
    PopupState* state = stateFor(popup);
    const int32_t count = PopulatePopupButtonFromMap(bundle, state->model, map, context, command);
    mirrorInto(popup, state->model.menu);
    return count;
}

int32_t PopulatePopupButtonFromMapAndHistory(const Bundle& bundle, QComboBox* popup, const SettingMap* map,
                                             JobContext context, std::optional<std::string_view> historyKey,
                                             int32_t insertPosition, uint32_t historyCommand, uint32_t mapCommand)
{
    PopupButtonModel scratch;
    PopupState* state = popup ? stateFor(popup) : nullptr;
    PopupButtonModel& model = state ? state->model : scratch;
    const int32_t count = PopulatePopupButtonFromMapAndHistory(bundle, model, map, context, historyKey, insertPosition,
                                                               historyCommand, mapCommand);
    if (popup)
        mirrorInto(popup, model.menu);
    return count;
}

bool SetPopupButtonToTicketValue(QComboBox* popup, int32_t value)
{
    PopupState* state = findState(popup);
    if (!state)
        return false;
    state->model.value = popup->currentIndex() + 1;
    if (!SetPopupButtonToTicketValue(state->model, value))
        return false;
    popup->setCurrentIndex(state->model.value - 1);
    return true;
}

int32_t GetPopupButtonTicketValue(const QComboBox* popup)
{
    PopupState* state = findState(popup);
    if (!state)
        return kNotSet;
    state->model.value = popup->currentIndex() + 1;
    return GetPopupButtonTicketValue(state->model);
}

const SettingMap* GetPopupMap(const QObject* popupOrMenu)
{
    const PopupState* state = findState(popupOrMenu);
    return state ? state->model.menu.map : nullptr;
}

int32_t GetPopupButtonMaximum(const QComboBox* popup)
{
    const PopupState* state = findState(popup);
    return state ? state->model.maximum : 0;
}

} // namespace talmo
