#include "host/extension.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>

namespace talmo::host {

namespace {

using Factory = void* (*)(CFAllocatorRef, CFUUIDRef);

// The factory function's name, as a plug-in loader reads it: the type's entry lists factory
// UUIDs, the factories table names each one's function.
std::string factoryNameFor(const Bundle& bundle, const Uuid& type, const Uuid& factory)
{
    auto info = bundle.infoDictionary();
    auto types = info ? info->getDict("CFPlugInTypes") : nullptr;
    auto factories = info ? info->getDict("CFPlugInFactories") : nullptr;
    if (!types || !factories)
        return {};
    for (const auto& [typeText, list] : *types) {
        auto ids = pl::as<pl::Array>(list);
        if (Uuid::fromString(typeText) != type || !ids)
            continue;
        for (const auto& id : *ids) {
            auto s = pl::as<pl::String>(id);
            if (!s || Uuid::fromString(s->text) != factory)
                continue;
            for (const auto& [factoryText, name] : *factories)
                if (Uuid::fromString(factoryText) == factory && pl::as<pl::String>(name))
                    return pl::as<pl::String>(name)->text;
        }
    }
    return {};
}

} // namespace

std::unique_ptr<Extension> Extension::load(const std::string& folder, std::string* error)
{
    auto fail = [&](std::string why) {
        if (error)
            *error = std::move(why);
        return nullptr;
    };
    std::unique_ptr<Extension> ext(new Extension);
    ext->bundle_ = Bundle::open(folder);
    if (!ext->bundle_)
        return fail("no plug-in bundle at " + folder);
    auto library = ext->bundle_->executablePath();
    if (!library)
        return fail(folder + " names no library");
    void* handle = dlopen(library->c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle)
        return fail(dlerror());
    const Uuid type = *Uuid::fromString(kPMPrintingDialogExtensionTypeIDStr);
    const Uuid factoryID = *Uuid::fromString(kTalmoPDEFactoryIDStr);
    const std::string name = factoryNameFor(*ext->bundle_, type, factoryID);
    auto factory = name.empty() ? nullptr : reinterpret_cast<Factory>(dlsym(handle, name.c_str()));
    if (!factory)
        return fail(folder + "/Info.plist names no factory function for " + kTalmoPDEFactoryIDStr);
    ext->instance_ = static_cast<IUnknownInstance*>(factory(nullptr, &type));
    if (!ext->instance_)
        return fail("the factory " + name + " made no instance");
    const Uuid iid = *Uuid::fromString(kPMPrintingDialogExtensionIntfIIDStr);
    CFUUIDBytes bytes{};
    for (size_t i = 0; i < 16; ++i)
        bytes.bytes[i] = iid.bytes()[i];
    void* out = nullptr;
    if (ext->instance_->vtablePtr->QueryInterface(ext->instance_, bytes, &out) != 0 || !out ||
        !static_cast<PlugInIntf*>(out)->vtable)
        return fail("the plug-in does not answer the print dialog extension interface");
    ext->intf_ = static_cast<PlugInIntf*>(out);
    const PlugInIntfVTable& t = *ext->intf_->vtable;
    if (!t.Prologue || !t.Initialize || !t.Sync || !t.GetSummaryText || !t.Open || !t.Close || !t.Terminate)
        return fail("the plug-in's interface record has empty slots");
    return ext;
}

Extension::~Extension()
{
    if (intf_ && intf_->vtable && intf_->vtable->Release)
        intf_->vtable->Release(&intf_);
    if (instance_)
        instance_->vtablePtr->Release(instance_);
}

std::string FindBundleFolder(const std::string& programFolder)
{
    namespace fs = std::filesystem;
    if (const char* env = std::getenv("TALMO_BUNDLE_DIR"); env && *env)
        return env;
    const fs::path bin(programFolder);
    for (const fs::path& candidate :
         {bin / "../lib/talmo/TalmoFeatures.plugin", bin / "../plugin/TalmoFeatures.plugin"}) {
        std::error_code ec;
        if (fs::exists(candidate / "Info.plist", ec))
            return fs::weakly_canonical(candidate, ec).string();
    }
    return {};
}

} // namespace talmo::host
