// The factory and the IUnknown instance it returns.
#include "plugin/plugin.h"

#include <cstdlib>
#include <new>

namespace talmo {

namespace {

// The identifiers are constants of this file; a failure to parse them is our own bug.
const Uuid& extensionTypeID()
{
    static const Uuid u = *Uuid::fromString(kPMPrintingDialogExtensionTypeIDStr);
    return u;
}
const Uuid& factoryID()
{
    static const Uuid u = *Uuid::fromString(kTalmoPDEFactoryIDStr);
    return u;
}
const Uuid& extensionInterfaceID()
{
    static const Uuid u = *Uuid::fromString(kPMPrintingDialogExtensionIntfIIDStr);
    return u;
}
const Uuid& iUnknownID()
{
    static const Uuid u = *Uuid::fromString(kIUnknownUUIDStr);
    return u;
}

} // namespace

HRESULT QueryInterface(void* thisPointer, REFIID iid, void** ppv)
{
    if (!ppv)
        return HRESULT(E_NOINTERFACE);
    const Uuid requested{std::to_array(iid.bytes)};
    if (thisPointer && requested == iUnknownID()) {
        auto* instance = static_cast<IUnknownInstance*>(thisPointer);
        instance->vtablePtr->AddRef(instance);
        *ppv = instance;
        return 0;
    }
    if (requested == extensionInterfaceID()) {
        PlugInIntf* intf = nullptr;
        CreatePlugInInterface(&intf);
        *ppv = intf;
        return 0;
    }
    *ppv = nullptr;
    return HRESULT(E_NOINTERFACE);
}

ULONG IUnknownAddRef(void* thisPointer)
{
    if (!thisPointer)
        return 0;
    return ++static_cast<IUnknownInstance*>(thisPointer)->refCount;
}

ULONG IUnknownRelease(void* thisPointer)
{
    auto* instance = static_cast<IUnknownInstance*>(thisPointer);
    if (!instance || instance->refCount == 0)
        return 0;
    if (--instance->refCount > 0)
        return instance->refCount;
    CFPlugInRemoveInstanceForFactory(instance->factoryID);
    std::free(instance);
    return 0;
}

} // namespace talmo

extern "C" __attribute__((visibility("default"))) void* TalmoPDEPluginFactory(talmo::CFAllocatorRef,
                                                                              talmo::CFUUIDRef typeID)
{
    using namespace talmo;
    try {
        if (!typeID || *typeID != extensionTypeID())
            return nullptr;
        // Resources and localized texts come from the bundle this library sits in, unless
        // the host has named one already. Linked into a program instead, the folder found is
        // no bundle (it has no description) and is not taken.
        static const bool bundleFound = [] {
            if (!ExtensionBundle()) {
                // A hidden function: the exported factory's address may resolve to a host's copy.
                auto own = Bundle::containing(reinterpret_cast<const void*>(&factoryID));
                if (own && !own->infoDictionary()->empty())
                    SetExtensionBundle(std::move(own));
            }
            return true;
        }();
        (void)bundleFound;

        auto* instance = static_cast<IUnknownInstance*>(std::calloc(1, sizeof(IUnknownInstance)));
        if (!instance)
            return nullptr;
        instance->vtablePtr = &instance->vtable;
        instance->vtable.QueryInterface = &QueryInterface;
        instance->vtable.AddRef = &IUnknownAddRef;
        instance->vtable.Release = &IUnknownRelease;
        instance->factoryID = factoryID();
        instance->refCount = 1;
        CFPlugInAddInstanceForFactory(instance->factoryID);
        return instance;
    } catch (...) {
        return nullptr;
    }
}
