#include "panels/advanced/advanced-settings.h"

#include "settings/settings.h"

#include <algorithm>

namespace talmo::advanced {

const SettingMap _BookletLayoutOrderMap[] = {{"PrinterDefault", kNotSet, 0, nullptr, false},
                                             {"BookletOrderLeftToRight", 1, 0, nullptr, false},
                                             {"BookletOrderRightToLeft", 2, 0, nullptr, false},
                                             {nullptr, 0, 0, nullptr, false}};
const SettingMap _RotateImage180Map[] = {{"PrinterDefault", kNotSet, 0, nullptr, false},
                                         {"Off", 1, 0, nullptr, false},
                                         {"On", 2, 0, nullptr, false},
                                         {nullptr, 0, 0, nullptr, false}};
// The values are the delivery keywords' codes of the job ticket.
const SettingMap _OutputOrderMap[] = {
    {"PrinterDefault", kNotSet, 0, nullptr, false}, {"SameOrderFaceDown", 2, 0, nullptr, false},
    {"ReverseOrderFaceUp", 3, 0, nullptr, false},   {"SameOrderFaceUp", 4, 0, nullptr, false},
    {"ReverseOrderFaceDown", 5, 0, nullptr, false}, {nullptr, 0, 0, nullptr, false}};
const SettingMap _OPISubstitutionMap[] = {{"PrinterDefault", kNotSet, 0, nullptr, false},
                                          {"On", 2, 0, nullptr, false},
                                          {"Off", 3, 0, nullptr, false},
                                          {nullptr, 0, 0, nullptr, false}};
const SettingMap _OPIPrescanMap[] = {{"PrinterDefault", kNotSet, 0, nullptr, false},
                                     {"None", 2, 0, nullptr, false},
                                     {"Scan", 3, 0, nullptr, false},
                                     {"Gather", 4, 0, nullptr, false},
                                     {nullptr, 0, 0, nullptr, false}};
const SettingMap _PagesToPrintMap[] = {{"PagesToPrintAll", kPagesAll, 0, nullptr, false},
                                       {"PagesToPrintRange", kPagesRange, 0, nullptr, false},
                                       {nullptr, 0, 0, nullptr, false}};

namespace {

struct PopupKey {
    int32_t AdvancedSettings::*field;
    const char* key;
    const SettingMap* map;
    const char* title;
};

const PopupKey kPopupKeys[] = {
    {&AdvancedSettings::bookletOrder, kAdvancedBookletLayoutOrderStrKey, _BookletLayoutOrderMap, "BookletImageOrder"},
    {&AdvancedSettings::rotation, kAdvancedRotateImage180Key, _RotateImage180Map, "Rotation"},
    {&AdvancedSettings::outputOrder, kOutputOrderKey, _OutputOrderMap, "OutputOrder"},
    {&AdvancedSettings::opiSubstitution, kOPISubsitutionKey, _OPISubstitutionMap, "OPI"},
    {&AdvancedSettings::opiPrescan, kOPIPrescanKey, _OPIPrescanMap, "OPI Prescan"},
};

int32_t numberOr(const Ticket* ticket, const char* key, int32_t fallback)
{
    int32_t value = fallback;
    return TicketGetInt32(ticket, key, &value) == noErr ? value : fallback;
}

// A value no row of the map offers (an old or hand-made ticket) reads as the printer default,
// so that the popup and the ticket agree after the next save.
int32_t offeredOrDefault(const SettingMap* map, int32_t value)
{
    for (const SettingMap* row = map; row->key; ++row)
        if (row->ticketValue == value)
            return value;
    return map[0].ticketValue;
}

OSStatus setOrRemove(Ticket* ticket, const char* key, bool atDefault, int32_t value)
{
    return atDefault ? TicketRemove(ticket, key) : TicketSetInt32(ticket, key, value, kTalmoPanelCreator);
}

} // namespace

AdvancedSettings ReadAdvancedSettings(const Ticket* ticket)
{
    AdvancedSettings s;
    for (const PopupKey& p : kPopupKeys)
        s.*p.field = offeredOrDefault(p.map, numberOr(ticket, p.key, kNotSet));
    // A missing switch means what the print path does without it: the ticket goes with the job
    // (the host writes the TPIF options on every save). 2 is "Disabled" of the enabled map.
    const int32_t emit = numberOr(ticket, kEmitTPIFKey, 1);
    s.emitTPIF = emit != 0 && emit != 2;
    s.pagesToPrint = numberOr(ticket, kPagesToPrintSelectedKey, kPagesAll) != 0 ? kPagesRange : kPagesAll;
    if (s.pagesToPrint == kPagesRange) {
        s.fromPage = std::clamp(numberOr(ticket, kPagesToPrintFromKey, kFirstPage), kFirstPage, kLastPage);
        s.toPage = std::clamp(numberOr(ticket, kPagesToPrintToKey, s.fromPage), s.fromPage, kLastPage);
    }
    return s;
}

OSStatus WriteAdvancedSettings(const AdvancedSettings& s, Ticket* ticket)
{
    if (!ticket)
        return paramErr;
    OSStatus status = noErr;
    auto keep = [&status](OSStatus result) {
        if (status == noErr)
            status = result;
    };
    for (const PopupKey& p : kPopupKeys)
        keep(setOrRemove(ticket, p.key, s.*p.field == kNotSet, s.*p.field));
    // Written both ways: an unchecked box must turn the ticket off, not fall back to on.
    keep(TicketSetInt32(ticket, kEmitTPIFKey, s.emitTPIF ? 1 : 0, kTalmoPanelCreator));
    const bool all = s.pagesToPrint != kPagesRange;
    keep(setOrRemove(ticket, kPagesToPrintSelectedKey, all, 1));
    keep(setOrRemove(ticket, kPagesToPrintFromKey, all, s.fromPage));
    keep(setOrRemove(ticket, kPagesToPrintToKey, all, s.toPage));
    return status;
}

std::vector<std::pair<std::string, std::string>> AdvancedSummary(const AdvancedSettings& s, const Localizer& localized)
{
    std::vector<std::pair<std::string, std::string>> lines;
    for (const PopupKey& p : kPopupKeys)
        if (s.*p.field != kNotSet)
            if (const char* value = LocalizedKeyForTicketValue(p.map, s.*p.field))
                lines.emplace_back(localized(p.title), localized(value));
    if (s.pagesToPrint == kPagesRange)
        lines.emplace_back(localized("PagesToPrint"), std::to_string(s.fromPage) + " - " + std::to_string(s.toPage));
    if (s.emitTPIF)
        lines.emplace_back(localized("EmitTPIFSummary"), localized("On"));
    return lines;
}

} // namespace talmo::advanced
