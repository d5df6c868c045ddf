#include "device/installable.h"

#include "settings/settings.h"

#include <map>

namespace talmo {

// Option keywords are the demo printers' "InstallableOptions" group; see docs/device.md.
const InstalledFeatureMap kTalmoInstalledFeatureMap[] = {
    {"AutoSwitchTrayKey", "TLAutoSwitchTray", "True", "AutoSwitchTrayKey", 18},
    {"StackerTray1Key", "Option1", "HCS", "StackerTray1Key", 17},
    {"StackerTray1Key", "Option1", "HCSD3Finisher", "StackerTray1Key", 17},
    {"StackerTray1Key", "Option1", "ProfFinisher", "StackerTray1Key", 4},
    {"StackerTray1Key", "Option1", "ProdFinisher", "StackerTray1Key", 4},
    {"StackerTray2Key", "Option1", "HCSD3Finisher", "StackerTray2Key", 15},
    {"SimpleCatchTrayKey", "Option1", "SCT", "SimpleCatchTrayKey", 2},
    {"SimpleCatchTrayKey", "Option1", "BFMBFM", "SimpleCatchTrayKey", 2},
    {"SimpleCatchTrayKey", "Option1", "BFMBFMFTM", "SimpleCatchTrayKey", 2},
    {"OmbraInserter", "TLInserter", "True", "OmbraInserter", 1},
    {"PostPrintInserterKey", "TLPostPrintInserter", "True", "PostPrintInserterKey", 10},
    {"OffsetCatchTray", "Option1", "OCT", "OffsetCatchTray", 3},
    {"AdvancedFinisher", "Option1", "AdvFinisher", "AdvancedFinisher", 0},
    {"ProfessionalFinisher", "Option1", "ProfFinisher", "ProfessionalFinisher", 0},
    {"ProductionFinisher", "Option1", "ProdFinisher", "ProductionFinisher", 0},
    {"HighCapacityStacker", "Option1", "HCS", "HighCapacityStacker", 0},
    {"HighCapacityStacker", "Option1", "HCSD3Finisher", "HighCapacityStacker", 0},
    {"LightProductionFinisher", "Option1", "D3Finisher", "LightProductionFinisher", 0},
    {"LightProductionFinisher", "Option1", "HCSD3Finisher", "LightProductionFinisher", 0},
    {"BookletMaker", "Option1", "BFMBFM", "BookletMaker", 7},
    {"BookletMaker", "Option1", "BFMBFMFTM", "BookletMaker", 7},
    {"BookletMaker", "Option1", "ProdFinisher", "BookletMaker", 7},
    {"Stapler", "Option1", "AdvFinisher", "Stapler", 0},
    {"Stapler", "Option1", "ProfFinisher", "Stapler", 0},
    {"Stapler", "Option1", "ProdFinisher", "Stapler", 0},
    {"Stapler", "Option1", "D3Finisher", "Stapler", 0},
    {"Stapler", "Option1", "HCSD3Finisher", "Stapler", 0},
    {"HolePuncher", "Option1", "ProfFinisher", "HolePuncher", 0},
    {"HolePuncher", "Option1", "ProdFinisher", "HolePuncher", 0},
    {"Folder", "Option1", "ProdFinisher", "Folder", 0},
    {"Folder", "Option1", "BFMBFMFTM", "Folder", 0},
    {nullptr, nullptr, nullptr, nullptr, 0}};

namespace {

// Option keyword -> keyword of its marked choice; absent until loaded.
std::optional<std::map<std::string, std::string, std::less<>>> installableOptionsDict;
const InstalledFeatureMap* featureMap = nullptr;

bool rowHolds(const InstalledFeatureMap& row)
{
    if (!row.option)
        return true;
    std::string choice;
    return getInstallableOptionValue(row.option, &choice) && row.requiredChoice && choice == row.requiredChoice;
}

} // namespace

bool LoadInstallableOptions(PPDHandle ppd, const InstalledFeatureMap* map)
{
    // Without a PPD or a map nothing is loaded, so nothing may stay behind to refuse the
    // load that follows once the printer's PPD opens.
    if (!ppd || !map || installableOptionsDict || featureMap)
        return false;
    featureMap = map;
    installableOptionsDict.emplace();
    for (auto& [option, choice] : PPDInstallableOptionChoices(ppd))
        installableOptionsDict->emplace(option, choice);
    // Setting map rows that depend on an installable feature now see the printer's options.
    SetInstalledFeatureHook([](const std::string& feature) { return getInstalledFeature(feature); });
    return !installableOptionsDict->empty();
}

void UnloadInstallableOptions()
{
    installableOptionsDict.reset();
    featureMap = nullptr;
    SetInstalledFeatureHook(nullptr);
}

bool getInstallableOptionValue(std::string_view option, std::string* choice)
{
    if (!installableOptionsDict)
        return false;
    auto it = installableOptionsDict->find(option);
    if (it == installableOptionsDict->end())
        return false;
    if (choice)
        *choice = it->second;
    return true;
}

bool getInstalledFeature(std::string_view name)
{
    if (!featureMap)
        return false;
    for (const InstalledFeatureMap* row = featureMap; row->name; ++row)
        if (name == row->name && rowHolds(*row))
            return true;
    return false;
}

int32_t getInstallableOptionTicketValue(std::string_view name)
{
    if (!featureMap)
        return -1;
    for (const InstalledFeatureMap* row = featureMap; row->name; ++row)
        if (name == row->name && rowHolds(*row))
            return row->ticketValue;
    return -1;
}

std::string CopyLocalizedStringForInstalledFeatureFromPlugin(std::string_view name, const Bundle* bundle)
{
    const char* key = nullptr;
    if (featureMap) {
        for (const InstalledFeatureMap* row = featureMap; row->name; ++row) {
            if (name != row->name)
                continue;
            if ((!row->option || rowHolds(*row)) && row->localizedKey) {
                key = row->localizedKey;
                break;
            }
            key = row->localizedKey; // with no row that holds, the last row's key is used
        }
    }
    if (!bundle || !key)
        return "STRING NOT FOUND";
    return bundle->localizedString(key);
}

} // namespace talmo
