#include "toolkit/private-bundle.h"

namespace talmo {

OSStatus LoadPrivateBundle(const Bundle& bundle, std::string_view name, std::optional<Bundle>* out)
{
    if (!out || name.empty() || name.front() == '/')
        return paramErr;
    // resourcePath refuses ".." components; it answers nullopt for them as for a missing name.
    for (size_t start = 0; start <= name.size();) {
        const size_t end = std::min(name.find('/', start), name.size());
        if (name.substr(start, end - start) == "..")
            return paramErr;
        start = end + 1;
    }
    auto path = bundle.resourcePath(name);
    if (!path)
        return fnfErr;
    auto found = Bundle::open(*path);
    if (!found)
        return fnfErr;
    *out = std::move(found);
    return noErr;
}

} // namespace talmo
