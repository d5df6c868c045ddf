#include "platform/plugin-registry.h"

#include <dlfcn.h>

#include <map>
#include <mutex>

namespace {

std::mutex gRegistryMutex;

std::map<talmo::Uuid, size_t>& registry()
{
    static std::map<talmo::Uuid, size_t> counts;
    return counts;
}

talmo::Uuid fromRaw(const uint8_t* raw)
{
    talmo::Uuid::Bytes b{};
    for (size_t i = 0; i < b.size(); ++i)
        b[i] = raw[i];
    return talmo::Uuid(b);
}

struct Entry {
    void (*add)(const uint8_t*);
    void (*remove)(const uint8_t*);
    size_t (*count)(const uint8_t*);
};

// The host's registry when the host exports one, else this copy's own functions.
const Entry& entry()
{
    static const Entry e = [] {
        Entry host{reinterpret_cast<void (*)(const uint8_t*)>(dlsym(RTLD_DEFAULT, "TalmoPlugInRegistryAdd")),
                   reinterpret_cast<void (*)(const uint8_t*)>(dlsym(RTLD_DEFAULT, "TalmoPlugInRegistryRemove")),
                   reinterpret_cast<size_t (*)(const uint8_t*)>(dlsym(RTLD_DEFAULT, "TalmoPlugInRegistryCount"))};
        if (host.add && host.remove && host.count)
            return host;
        return Entry{&TalmoPlugInRegistryAdd, &TalmoPlugInRegistryRemove, &TalmoPlugInRegistryCount};
    }();
    return e;
}

} // namespace

extern "C" void TalmoPlugInRegistryAdd(const uint8_t* factory)
{
    if (!factory)
        return;
    std::lock_guard lock(gRegistryMutex);
    ++registry()[fromRaw(factory)];
}

extern "C" void TalmoPlugInRegistryRemove(const uint8_t* factory)
{
    if (!factory)
        return;
    std::lock_guard lock(gRegistryMutex);
    auto it = registry().find(fromRaw(factory));
    if (it == registry().end())
        return;
    if (--it->second == 0)
        registry().erase(it);
}

extern "C" size_t TalmoPlugInRegistryCount(const uint8_t* factory)
{
    if (!factory)
        return 0;
    std::lock_guard lock(gRegistryMutex);
    auto it = registry().find(fromRaw(factory));
    return it == registry().end() ? 0 : it->second;
}

namespace talmo {

void CFPlugInAddInstanceForFactory(const Uuid& factory) { entry().add(factory.bytes().data()); }
void CFPlugInRemoveInstanceForFactory(const Uuid& factory) { entry().remove(factory.bytes().data()); }
size_t CFPlugInInstanceCountForFactory(const Uuid& factory) { return entry().count(factory.bytes().data()); }

} // namespace talmo
