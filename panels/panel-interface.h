// The ten-slot operation record shared by the extension and by every panel module. The slot
// order is the print system's and must not change; panels leave slots 1-3 null.
#pragma once

#include "settings/settings.h"

#include <cstdint>
#include <string>

namespace talmo {

using OSType = uint32_t;
using ULONG = uint32_t;

struct PMPlugInAPIVersion {
    uint32_t buildVersionMajor;
    uint32_t buildVersionMinor;
    uint32_t baseVersionMajor;
    uint32_t baseVersionMinor;
};

struct PlugInIntfVTable;
// The record QueryInterface returns for the extension interface, and the record a panel
// module's CreatePanelInterface makes.
struct PlugInIntf {
    PlugInIntfVTable* vtable; // separate allocation of ten slots, owned by the record
    ULONG refCount;
};
// The header part of an interface record, as slots 1-3 see it.
using PMPlugInHeaderInterface = PlugInIntf;

using PMPDEContext = void*; // a panel's (or the host's) own context
using PMPDEFlags = uint32_t;
using PMPDERef = void*;   // the dialog's reference for the extension
using ControlRef = void*; // a pane: a QWidget in the Qt dialog
using PMPrintSession = PrintSession*;

// Strings and arrays handed out belong to the caller; GetSummaryText appends to the arrays,
// creating them when null.
struct PlugInIntfVTable {
    OSStatus (*Retain)(PMPlugInHeaderInterface* obj);
    OSStatus (*Release)(PMPlugInHeaderInterface** objPtr);
    OSStatus (*GetAPIVersion)(PMPlugInHeaderInterface* obj, PMPlugInAPIVersion* versionPtr);
    OSStatus (*Prologue)(PMPDEContext* context, OSType* creator, std::string* userOptionKind, std::string* title,
                         uint32_t* maxH, uint32_t* maxV);
    OSStatus (*Initialize)(PMPDEContext context, PMPDEFlags* flags, PMPDERef ref, ControlRef parentUserPane,
                           PMPrintSession printSession);
    OSStatus (*Sync)(PMPDEContext context, PMPrintSession printSession, bool reinitializePlugIn);
    OSStatus (*GetSummaryText)(PMPDEContext context, pl::ArrayPtr* titleArray, pl::ArrayPtr* summaryArray);
    OSStatus (*Open)(PMPDEContext context);
    OSStatus (*Close)(PMPDEContext context);
    OSStatus (*Terminate)(PMPDEContext context, OSStatus status);
};
inline constexpr size_t kPlugInIntfSlotCount = 10;
static_assert(sizeof(PlugInIntfVTable) == kPlugInIntfSlotCount * sizeof(void*));

// What a panel module's entry point returns through `intf`: a new record (malloc'd, count 1)
// whose table (calloc'd) the caller copies and frees with FreePanelInterface.
using PanelInterfaceEntryPoint = OSStatus (*)(PlugInIntf** intf);
void FreePanelInterface(PlugInIntf* intf);

} // namespace talmo
