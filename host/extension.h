// The print dialog extension as a print dialog loads it: the bundle's library opened with
// dlopen, the factory found by the name Info.plist gives for our factory, the instance and
// the ten-slot interface record it answers.
#pragma once

#include "plugin/plugin.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace talmo::host {

class Extension {
public:
    // Opens the bundle folder and asks its factory for the extension interface. Null with the
    // reason in `error` when any step fails.
    static std::unique_ptr<Extension> load(const std::string& bundleFolder, std::string* error);
    // Releases the record and the instance. The library stays loaded: values it created (the
    // summary arrays, strings) may outlive us, and their destructors live in it.
    ~Extension();

    const Bundle& bundle() const { return *bundle_; }
    PlugInIntfVTable& table() const { return *intf_->vtable; }

private:
    Extension() = default;
    std::optional<Bundle> bundle_;
    IUnknownInstance* instance_ = nullptr;
    PlugInIntf* intf_ = nullptr;
};

// Where the bundle is: $TALMO_BUNDLE_DIR, else beside the program in an install tree
// (<prefix>/lib/talmo/) or a build tree (<build>/plugin/). Empty when none exists.
std::string FindBundleFolder(const std::string& programFolder);

} // namespace talmo::host
