// Device profile feature database: every printer feature with its identifier, syntaxes,
// limits, default and free-form properties, loaded once from the bundle's
// "Device Profile.plist" and never changed.
#pragma once

#include "platform/platform.h"

#include <string>
#include <string_view>

namespace talmo {

// Loads the profile from the extension bundle's resources when not loaded yet.
void TDPInitialize();
// Loads from a file (the command line and tests); false when it cannot be read.
bool TDPInitializeFromFile(const std::string& path);
void TDPFinalize();

pl::DictPtr TDPGetFeature(std::string_view name);
// Features in the profile's own order whose "Properties" hold `property` (equal to `value`
// when value is non-null). Never null.
pl::ArrayPtr TDPGetFeaturesWithPropertyAndValue(std::string_view property, const pl::ValuePtr& value);
pl::ArrayPtr TDPGetFeaturesWithProperty(std::string_view property);
// kind: "Keyword", "Name" or "Number".
pl::DictPtr TDPGetFeatureSyntax(const pl::DictPtr& feature, std::string_view kind);
pl::ValuePtr TDPGetFeatureProperty(const pl::DictPtr& feature, std::string_view name);
bool TDPGetFeatureDefaultValue(const pl::DictPtr& feature, std::string* kind, pl::ValuePtr* value);
// Keyword names of the feature's "Keyword" syntax whose "Properties" hold property == value.
pl::ArrayPtr TDPGetKeywordsWithPropertyAndValue(const pl::DictPtr& feature, std::string_view property,
                                                const pl::ValuePtr& value);

} // namespace talmo
