#include "device/profile.h"

#include "settings/settings.h"

namespace talmo {

namespace {

pl::DictPtr dev_profile;

pl::DictPtr features() { return dev_profile ? dev_profile->getDict("Features") : nullptr; }

pl::DictPtr properties(const pl::DictPtr& feature) { return feature ? feature->getDict("Properties") : nullptr; }

} // namespace

bool TDPInitializeFromFile(const std::string& path)
{
    if (dev_profile)
        return true;
    dev_profile = pl::as<pl::Dictionary>(pl::readPlistFile(path));
    return dev_profile != nullptr;
}

void TDPInitialize()
{
    if (dev_profile)
        return;
    const Bundle* bundle = ExtensionBundle();
    if (!bundle)
        return;
    if (auto path = bundle->resourcePath("Device Profile.plist"))
        TDPInitializeFromFile(*path);
}

void TDPFinalize() { dev_profile.reset(); }

pl::DictPtr TDPGetFeature(std::string_view name)
{
    auto f = features();
    return f ? f->getDict(name) : nullptr;
}

pl::ArrayPtr TDPGetFeaturesWithPropertyAndValue(std::string_view property, const pl::ValuePtr& value)
{
    auto out = pl::makeArray();
    auto f = features();
    if (!f)
        return out;
    for (const auto& [name, v] : *f) {
        auto props = properties(pl::as<pl::Dictionary>(v));
        if (!props)
            continue;
        auto p = props->get(property);
        if (p && (!value || pl::equal(p, value)))
            out->append(v);
    }
    return out;
}

pl::ArrayPtr TDPGetFeaturesWithProperty(std::string_view property)
{
    return TDPGetFeaturesWithPropertyAndValue(property, nullptr);
}

pl::DictPtr TDPGetFeatureSyntax(const pl::DictPtr& feature, std::string_view kind)
{
    auto syntax = feature ? feature->getDict("Syntax") : nullptr;
    return syntax ? syntax->getDict(kind) : nullptr;
}

pl::ValuePtr TDPGetFeatureProperty(const pl::DictPtr& feature, std::string_view name)
{
    auto props = properties(feature);
    return props ? props->get(name) : nullptr;
}

bool TDPGetFeatureDefaultValue(const pl::DictPtr& feature, std::string* kind, pl::ValuePtr* value)
{
    if (auto keywords = TDPGetFeatureSyntax(feature, "Keyword")) {
        for (const auto& [name, v] : *keywords) {
            auto kw = pl::as<pl::Dictionary>(v);
            if (kw && kw->getBool("Default") == true) {
                if (kind)
                    *kind = "Keyword";
                if (value)
                    *value = pl::makeString(name);
                return true;
            }
        }
    }
    for (const char* k : {"Name", "Number"}) {
        auto syntax = TDPGetFeatureSyntax(feature, k);
        auto def = syntax ? syntax->get("Default") : nullptr;
        if (def) {
            if (kind)
                *kind = k;
            if (value)
                *value = def;
            return true;
        }
    }
    return false;
}

pl::ArrayPtr TDPGetKeywordsWithPropertyAndValue(const pl::DictPtr& feature, std::string_view property,
                                                const pl::ValuePtr& value)
{
    auto out = pl::makeArray();
    auto keywords = TDPGetFeatureSyntax(feature, "Keyword");
    if (!keywords)
        return out;
    for (const auto& [name, v] : *keywords) {
        auto props = properties(pl::as<pl::Dictionary>(v));
        auto p = props ? props->get(property) : nullptr;
        if (p && value && pl::equal(p, value))
            out->append(pl::makeString(name));
    }
    return out;
}

} // namespace talmo
