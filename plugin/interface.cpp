// The printing-dialog-extension interface record and its header operations (slots 1-3).
#include "plugin/plugin.h"

#include <cstdlib>

namespace talmo {

OSStatus CreatePlugInInterface(PlugInIntf** objPtr)
{
    if (!objPtr)
        return noErr;
    auto* intf = static_cast<PlugInIntf*>(std::malloc(sizeof(PlugInIntf)));
    *objPtr = intf;
    if (!intf)
        return noErr;
    intf->refCount = 1;
    intf->vtable = static_cast<PlugInIntfVTable*>(std::calloc(1, sizeof(PlugInIntfVTable)));
    if (!intf->vtable)
        return noErr;
    PlugInIntfVTable& t = *intf->vtable;
    t.Retain = &Retain;
    t.Release = &Release;
    t.GetAPIVersion = &GetAPIVersion;
    // The dialog operations are the panel host's.
    t.Prologue = &Prologue;
    t.Initialize = &Initialize;
    t.Sync = &Sync;
    t.GetSummaryText = &GetSummaryText;
    t.Open = &Open;
    t.Close = &Close;
    t.Terminate = &Terminate;
    return noErr;
}

OSStatus Retain(PMPlugInHeaderInterface* obj)
{
    if (obj)
        ++obj->refCount;
    return noErr;
}

OSStatus Release(PMPlugInHeaderInterface** objPtr)
{
    if (!objPtr || !*objPtr)
        return noErr;
    PlugInIntf* intf = *objPtr;
    *objPtr = nullptr;
    if (intf->refCount > 0 && --intf->refCount == 0) {
        std::free(intf->vtable);
        std::free(intf);
    }
    return noErr;
}

OSStatus GetAPIVersion(PMPlugInHeaderInterface*, PMPlugInAPIVersion* versionPtr)
{
    if (versionPtr)
        *versionPtr = PMPlugInAPIVersion{1, 0, 1, 0};
    return noErr;
}

} // namespace talmo
