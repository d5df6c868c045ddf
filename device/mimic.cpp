#include "device/mimic.h"

#include "device/installable.h"
#include "settings/settings.h"

#include <cstdio>
#include <string>

namespace talmo {

namespace {

struct MimicRow {
    const char* option1;
    const char* studio;
    const char* office;
};

// "LHCS+LPCF" against "HCS+LPCF" differ on purpose: both names are the shipped files.
const MimicRow kMimics[] = {
    {"SCT", "Mimic_FF_FENN-PN_SingleCatchTray.gif", "Mimic_FF_FENN_SingleCatchTray.gif"},
    {"OCT", "Mimic_FF_FENN-PN_Standard.gif", "Mimic_FF_FENN_Standard.gif"},
    {"AdvFinisher", "Mimic_FF_FENN-PN_Advanced.gif", "Mimic_FF_FENN_Advanced.gif"},
    {"ProfFinisher", "Mimic_FF_FENN-PN_Professional.gif", "Mimic_FF_FENN_Professional.gif"},
    {"ProdFinisher", "Mimic_FF_FENN-PN_Production.gif", "Mimic_FF_FENN_Production.gif"},
    {"HCS", "Mimic_FF_FENN-PN_HCS.gif", "Mimic_FF_FENN_HCS.gif"},
    {"D3Finisher", "Mimic_FF_FENN-PN_LPCF.gif", "Mimic_FF_FENN_LPCF.gif"},
    {"HCSD3Finisher", "Mimic_FF_FENN-PN_LHCS+LPCF.gif", "Mimic_FF_FENN_HCS+LPCF.gif"},
};

const MimicRow* rowFor(const std::string& value)
{
    for (const auto& row : kMimics)
        if (value == row.option1)
            return &row;
    return nullptr;
}

} // namespace

const char* DeviceMimicFilenameForModel(std::string_view model)
{
    std::string option1;
    if (model == "Talmo Studio Press") {
        if (!getInstallableOptionValue("Option1", &option1))
            return nullptr;
        const MimicRow* row = rowFor(option1);
        return row ? row->studio : nullptr;
    }
    if (model == "Talmo Office Press") {
        std::fputs("In position  --- 1\n", stderr);
        if (!getInstallableOptionValue("Option1", &option1))
            return nullptr;
        std::fputs("In position -- 2\n", stderr);
        if (option1 == "SCT")
            std::fputs("In position -- 3\n", stderr);
        const MimicRow* row = rowFor(option1);
        return row ? row->office : nullptr;
    }
    return nullptr;
}

const char* CopyDeviceMimicFilename()
{
    PrintSession* session = GetCurrentPrintSession();
    if (!session)
        return nullptr;
    Ticket* info = nullptr;
    if (GetTicketFromSession(session, "PMPrinterInfoTicket", &info) != noErr || !info)
        return nullptr;
    auto name = pl::as<pl::String>(info->get("com.apple.print.PrinterInfo.PMMakeAndModelName"));
    if (!name)
        return nullptr;
    return DeviceMimicFilenameForModel(name->text);
}

} // namespace talmo
