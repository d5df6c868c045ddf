#include "device/ppd.h"

#include "settings/settings.h"

namespace talmo {

pl::DictPtr PMTicketGetPPDDict(const Ticket* pageFormat)
{
    auto dict = pageFormat ? pl::as<pl::Dictionary>(pageFormat->get(kPMPPDDictKey)) : nullptr;
    return dict ? dict : pl::makeDict();
}

std::optional<std::string> PPDCopyCurrentChoice(const Ticket* pageFormat, std::string_view option)
{
    return PPDCopyCurrentChoice(PMTicketGetPPDDict(pageFormat), option);
}

OSStatus PPDSetCurrentChoice(Ticket* pageFormat, std::string_view option, std::string_view choice)
{
    if (!pageFormat || option.empty())
        return paramErr;
    // Ticket values are snapshots: change the copy, then store it back whole.
    auto dict = PMTicketGetPPDDict(pageFormat);
    PPDSetCurrentChoice(dict, option, choice);
    return pageFormat->set(kPMPPDDictKey, dict, kTalmoPanelCreator);
}

} // namespace talmo
