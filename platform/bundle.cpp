#include "platform/bundle.h"

#include "platform/plist.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace talmo {

namespace fs = std::filesystem;

namespace {

// A relative name without "..", "." or empty components, so lookups stay inside Resources/.
bool isSafeRelative(std::string_view name)
{
    if (name.empty() || name.front() == '/')
        return false;
    size_t start = 0;
    while (start <= name.size()) {
        size_t end = name.find('/', start);
        if (end == std::string_view::npos)
            end = name.size();
        std::string_view part = name.substr(start, end - start);
        if (part.empty() || part == "." || part == "..")
            return false;
        start = end + 1;
    }
    return name.find('\0') == std::string_view::npos;
}

bool pathExists(const fs::path& p)
{
    std::error_code ec;
    return fs::exists(p, ec);
}

} // namespace

std::optional<Bundle> Bundle::open(const std::string& folder)
{
    std::error_code ec;
    fs::path dir = fs::absolute(folder, ec);
    if (ec || !fs::is_directory(dir, ec))
        return std::nullopt;
    std::string p = dir.lexically_normal().string();
    while (p.size() > 1 && p.back() == '/')
        p.pop_back();

    auto impl = std::make_shared<Impl>();
    impl->path = p;
    fs::path infoPath = fs::path(p) / "Info.plist";
    if (pathExists(infoPath)) {
        pl::ParseResult r;
        impl->info = pl::as<pl::Dictionary>(pl::readPlistFile(infoPath.string(), &r));
        if (!impl->info) {
            std::fprintf(stderr, "%s:%d: %s\n", infoPath.c_str(), r.line,
                         r ? "the description is not a dictionary" : r.message.c_str());
            return std::nullopt;
        }
    } else {
        impl->info = pl::makeDict();
    }
    return Bundle(std::move(impl));
}

std::optional<Bundle> Bundle::containing(const void* address)
{
    Dl_info info{};
    if (!address || dladdr(address, &info) == 0 || !info.dli_fname)
        return std::nullopt;
    std::error_code ec;
    fs::path lib = fs::canonical(info.dli_fname, ec);
    if (ec)
        return std::nullopt;
    return open(lib.parent_path().string());
}

std::optional<std::string> Bundle::identifier() const { return impl_->info->getString("CFBundleIdentifier"); }

std::optional<std::string> Bundle::executablePath() const
{
    if (auto name = impl_->info->getString("CFBundleExecutable")) {
        if (name->find('/') != std::string::npos || !isSafeRelative(*name))
            return std::nullopt;
        return impl_->path + "/" + *name;
    }
    return impl_->path + "/lib" + fs::path(impl_->path).stem().string() + ".so";
}

std::optional<std::string> Bundle::resourcePath(std::string_view name) const
{
    if (!isSafeRelative(name))
        return std::nullopt;
    for (const char* where : {"/Resources/", "/Resources/en.lproj/"}) {
        std::string candidate = impl_->path + where + std::string(name);
        if (pathExists(candidate))
            return candidate;
    }
    return std::nullopt;
}

pl::DictPtr Bundle::stringsTable(std::string_view table) const
{
    for (const auto& [name, dict] : impl_->tables)
        if (name == table)
            return dict;
    pl::DictPtr dict;
    std::string file = std::string(table) + ".strings";
    if (isSafeRelative(file) && file.find('/') == std::string::npos) {
        std::string path = impl_->path + "/Resources/en.lproj/" + file;
        if (pathExists(path)) {
            StringsParseResult r;
            dict = readStringsFile(path, &r);
            if (!dict)
                std::fprintf(stderr, "%s:%d: %s\n", path.c_str(), r.line, r.message.c_str());
        }
    }
    if (!dict)
        dict = pl::makeDict();
    impl_->tables.emplace_back(std::string(table), dict);
    return dict;
}

std::string Bundle::localizedString(std::string_view key) const { return localizedString(key, kStringNotFound); }

std::string Bundle::localizedString(std::string_view key, std::string_view fallback, std::string_view table) const
{
    if (auto text = stringsTable(table)->getString(key))
        return *text;
    return std::string(fallback);
}

namespace {

std::optional<Bundle>& extensionBundleSlot()
{
    static std::optional<Bundle> bundle;
    return bundle;
}

} // namespace

Bundle* ExtensionBundle()
{
    auto& slot = extensionBundleSlot();
    if (!slot) {
        if (const char* dir = std::getenv("TALMO_BUNDLE_DIR"); dir && *dir)
            slot = Bundle::open(dir);
    }
    return slot ? &*slot : nullptr;
}

void SetExtensionBundle(std::optional<Bundle> bundle) { extensionBundleSlot() = std::move(bundle); }

} // namespace talmo
