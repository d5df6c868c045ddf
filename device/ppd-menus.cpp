#include "device/ppd.h"

#include "settings/settings.h"

namespace talmo {

int PPDPopulateMenuWithChoices(MenuModel& menu, PPDHandle ppd, std::string_view option)
{
    // Items carry ticket values, not positions: a choice without a map row is left out.
    std::vector<PPDMenuItem> choices;
    PPDPopulateMenuWithChoices(choices, ppd, option);
    menu.items.clear();
    menu.map = nullptr;
    for (auto& c : choices) {
        MenuItem item;
        item.label = std::move(c.text);
        item.reference = c.ticketValue;
        menu.items.push_back(std::move(item));
    }
    return menu.count();
}

int PPDPopulatePopupWithChoices(PopupButtonModel& popup, PPDHandle ppd, std::string_view option)
{
    popup.maximum = PPDPopulateMenuWithChoices(popup.menu, ppd, option);
    return popup.maximum;
}

void InstallPPDMediaLimits()
{
    SetMediaLimitsHook([]() -> std::optional<MediaLimits> {
        float minW, minH, maxW, maxH;
        PPDHandle ppd = PPDGetCurrent();
        if (!ppd || !PPDGetCustomSizeLimits(ppd, &minW, &minH, &maxW, &maxH))
            return std::nullopt;
        return MediaLimits{minW, minH, maxW, maxH};
    });
}

} // namespace talmo
