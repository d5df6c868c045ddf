// Installable options: the PPD group "InstallableOptions" read into a table of option ->
// marked choice, and the installed-feature map that tells which optional features (trays,
// stackers, inserters, finisher models) the printer has.
#pragma once

#include "device/ppd.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace talmo {

class Bundle;

// One row of the installed-feature map; the map ends with a row whose name is null. A
// feature may have several rows and is installed when any of them holds.
struct InstalledFeatureMap {
    const char* name;           // feature name asked for by the panels and setting maps
    const char* option;         // installable option keyword, or null (always installed)
    const char* requiredChoice; // the option's choice for which the row holds
    const char* localizedKey;   // label of the feature
    int32_t ticketValue;        // value the feature stands for (an output destination, ...)
};

// The map the panel host hands to LoadInstallableOptions for Talmo presses.
extern const InstalledFeatureMap kTalmoInstalledFeatureMap[];

// Only once: false when a table or a feature map is already loaded (the first stays).
// True when at least one option was stored. Without a PPD or a map: false, nothing loaded.
bool LoadInstallableOptions(PPDHandle ppd, const InstalledFeatureMap* featureMap);
void UnloadInstallableOptions();
bool getInstallableOptionValue(std::string_view option, std::string* choice);
bool getInstalledFeature(std::string_view name);
// The ticket value of the first row of `name` that holds; -1 when none holds.
int32_t getInstallableOptionTicketValue(std::string_view name);
// The label of the feature, looked up in `bundle` ("STRING NOT FOUND" when missing).
std::string CopyLocalizedStringForInstalledFeatureFromPlugin(std::string_view name, const Bundle* bundle);

} // namespace talmo
