// The factory and the IUnknown instance it returns.
#include "plugin/plugin.h"

#include <cstdlib>
#include <new>

namespace talmo {

namespace {

const Uuid& uuidOf(const char* text)
{
    // The identifiers are constants of this file; a failure here is our own bug.
    static const Uuid type = *Uuid::fromString(kPMPrintingDialogExtensionTypeIDStr);
    static const Uuid factory = *Uuid::fromString(kTalmoPDEFactoryIDStr);
    static const Uuid extension = *Uuid::fromString(kPMPrintingDialogExtensionIntfIIDStr);
    static const Uuid iunknown = *Uuid::fromString(kIUnknownUUIDStr);
    if (text == kPMPrintingDialogExtensionTypeIDStr)
        return type;
    if (text == kTalmoPDEFactoryIDStr)
        return factory;
    if (text == kPMPrintingDialogExtensionIntfIIDStr)
        return extension;
    return iunknown;
}

} // namespace

HRESULT QueryInterface(void* thisPointer, REFIID iid, void** ppv)
{
    if (!ppv)
        return HRESULT(E_NOINTERFACE);
    const Uuid requested{std::to_array(iid.bytes)};
    if (thisPointer && requested == uuidOf(kIUnknownUUIDStr)) {
        auto* instance = static_cast<IUnknownInstance*>(thisPointer);
        instance->vtablePtr->AddRef(instance);
        *ppv = instance;
        return 0;
    }
    if (requested == uuidOf(kPMPrintingDialogExtensionIntfIIDStr)) {
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

extern "C" __attribute__((visibility("default"))) void* TalmoPDEPluginFactory(talmo::CFAllocatorRef, talmo::CFUUIDRef typeID)
{
    using namespace talmo;
    try {
        if (!typeID || *typeID != uuidOf(kPMPrintingDialogExtensionTypeIDStr))
            return nullptr;
        // Resources and localized texts come from the bundle this library sits in, unless
        // the host has named one already.
        static const bool bundleFound = [] {
            if (!ExtensionBundle())
                SetExtensionBundle(Bundle::containing(reinterpret_cast<const void*>(&TalmoPDEPluginFactory)));
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
        instance->factoryID = uuidOf(kTalmoPDEFactoryIDStr);
        instance->refCount = 1;
        CFPlugInAddInstanceForFactory(instance->factoryID);
        return instance;
    } catch (...) {
        return nullptr;
    }
}
