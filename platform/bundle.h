// Bundles: a folder with a description, a loadable library and resources.
//
// Layout of a bundle folder:
//   <folder>/Info.plist                       the description (a dictionary); optional
//   <folder>/<CFBundleExecutable>             the library, named by Info.plist; without that
//                                             key lib<folder name without extension>.so
//   <folder>/Resources/<name>                 resources
//   <folder>/Resources/en.lproj/<name>        localized resources, the only localization
//   <folder>/Resources/en.lproj/<table>.strings  string tables ("Localizable" by default)
#pragma once

#include "platform/strings-table.h"
#include "platform/values.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace talmo {

// What a missing localized string shows.
inline constexpr std::string_view kStringNotFound = "STRING NOT FOUND";

class Bundle {
public:
    // nullopt when `folder` is not a directory, or when its Info.plist exists but is not a
    // readable dictionary (a diagnostic goes to stderr). A folder without Info.plist opens
    // with an empty description.
    static std::optional<Bundle> open(const std::string& folder);
    // The bundle whose library contains `address` (dladdr: the library's folder).
    static std::optional<Bundle> containing(const void* address);

    // Absolute folder path, without a trailing slash.
    const std::string& path() const { return impl_->path; }
    // The description; never null (empty without Info.plist). Shared: changes are seen by
    // every copy of this Bundle.
    pl::DictPtr infoDictionary() const { return impl_->info; }
    std::optional<std::string> identifier() const;
    // The library's path (it need not exist); nullopt when CFBundleExecutable is not a plain
    // file name.
    std::optional<std::string> executablePath() const;

    // Path of an existing resource: Resources/<name>, then Resources/en.lproj/<name>. `name`
    // may have sub-folders ("ppd/x.ppd"); absolute names and ".." components are refused.
    std::optional<std::string> resourcePath(std::string_view name) const;

    // Localized text of `key` in the table (default "Localizable"), or `fallback`. A table
    // that is missing or fails to parse counts as empty (one diagnostic on stderr).
    std::string localizedString(std::string_view key) const;
    std::string localizedString(std::string_view key, std::string_view fallback,
                                std::string_view table = "Localizable") const;
    // The whole table (parsed once, then cached); empty when missing or malformed.
    pl::DictPtr stringsTable(std::string_view table = "Localizable") const;

private:
    struct Impl {
        std::string path;
        pl::DictPtr info;
        std::vector<std::pair<std::string, pl::DictPtr>> tables; // cache
    };
    explicit Bundle(std::shared_ptr<Impl> impl) : impl_(std::move(impl)) { }
    std::shared_ptr<Impl> impl_;
};

// The extension's own bundle, process-wide. Set by the plug-in when its library is loaded;
// until then found from the environment variable TALMO_BUNDLE_DIR (checked on each call while
// unset). Null when neither gives a bundle.
Bundle* ExtensionBundle();
void SetExtensionBundle(std::optional<Bundle> bundle);

} // namespace talmo
