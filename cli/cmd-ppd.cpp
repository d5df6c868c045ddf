// talmo ppd choices|installable|mimic: what a printer's PPD offers, as the panels see it.
#include "cli/command.h"
#include "device/device.h"

#include <cstdio>

namespace {

using namespace talmo;

// Opens the PPD as the current one and loads its installable options.
bool openPPD(const std::string& path, PPDHandle& ppd, int& status)
{
    ppd = PPDOpenAsCurrent(path);
    if (!ppd) {
        int line = 0;
        std::string why = PPDLastErrorText(&line);
        status = cli::fail(path + (line ? ":" + std::to_string(line) : "") + ": not a usable PPD (" + why + ")");
        return false;
    }
    UnloadInstallableOptions();
    LoadInstallableOptions(ppd, kTalmoInstalledFeatureMap);
    return true;
}

int choices(const std::vector<std::string>& args)
{
    if (args.size() != 3)
        return cli::usage("ppd choices takes PPD OPTION");
    PPDHandle ppd;
    int status = 0;
    if (!openPPD(args[1], ppd, status))
        return status;
    // An option the PPD does not have is an error here, not the dialog's empty menu.
    if (!PPDCopyDefaultChoice(ppd, args[2])) {
        PPDCloseCurrent();
        return cli::fail(args[1] + ": no option " + args[2]);
    }
    std::vector<PPDMenuItem> items;
    PPDPopulateMenuWithChoices(items, ppd, args[2]);
    for (const auto& item : items)
        std::printf("%d\t%s\n", item.ticketValue, item.text.c_str());
    PPDCloseCurrent();
    return 0;
}

int installable(const std::vector<std::string>& args)
{
    if (args.size() != 2)
        return cli::usage("ppd installable takes PPD");
    PPDHandle ppd;
    int status = 0;
    if (!openPPD(args[1], ppd, status))
        return status;
    for (const auto& [option, choice] : PPDInstallableOptionChoices(ppd))
        std::printf("%s=%s\n", option.c_str(), choice.c_str());
    PPDCloseCurrent();
    return 0;
}

int mimic(const std::vector<std::string>& args)
{
    if (args.size() != 2)
        return cli::usage("ppd mimic takes PPD");
    PPDHandle ppd;
    int status = 0;
    if (!openPPD(args[1], ppd, status))
        return status;
    // A CUPS queue reports the PPD's NickName as its make and model.
    const std::string model = PPDGetNickName(ppd).value_or("");
    const char* file = DeviceMimicFilenameForModel(model);
    std::string option1 = "none";
    getInstallableOptionValue("Option1", &option1);
    PPDCloseCurrent();
    if (!file)
        return cli::fail(args[1] + ": no device picture for \"" + model + "\" with Option1=" + option1);
    std::printf("%s\n", file);
    return 0;
}

cli::Registration regChoices("ppd choices", "PPD OPTION   offered choices: ticket value, tab, text", choices);
cli::Registration regInstallable("ppd installable", "PPD   installable options as OPTION=CHOICE", installable);
cli::Registration regMimic("ppd mimic", "PPD   the device picture for the PPD's model and finisher", mimic);

} // namespace
