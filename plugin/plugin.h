// The plug-in bundle's outer shell: the factory that the plug-in loader calls by name, the
// COM-style IUnknown instance it returns, the ten-slot interface record that QueryInterface
// hands out, and the generic entry points every dialog call passes through first.
//
// The bundle's library exports TalmoPDEPluginFactory and the six panel entry points (which the
// panel host looks up by name); everything else is reached through the records below, whose
// layout is the contract with the print dialog.
#pragma once

#include "panels/panels.h"
#include "settings/settings.h"

#include <cstdint>
#include <string>

namespace talmo {

// Identifiers of the print dialog's extension mechanism.
inline constexpr char kPMPrintingDialogExtensionTypeIDStr[] = "BDB091F4-E57F-11D3-B5CC-0050E4603277";
inline constexpr char kTalmoPDEFactoryIDStr[] = "7680F90E-ADCD-11D9-85C8-000A95BDF8C8";
inline constexpr char kPMPrintingDialogExtensionIntfIIDStr[] = "A996FD7E-B738-11D3-8519-0050E4603277";
inline constexpr char kIUnknownUUIDStr[] = "00000000-0000-0000-C000-000000000046";
inline constexpr char kTalmoPDEPluginFactoryName[] = "TalmoPDEPluginFactory";

using HRESULT = int32_t;
using CFAllocatorRef = void*;
using CFUUIDRef = const Uuid*;

// Sixteen UUID bytes passed by value, as QueryInterface receives an interface identifier.
struct CFUUIDBytes {
    uint8_t bytes[16];
};
using REFIID = CFUUIDBytes;

// ---- IUnknown ----

struct IUnknownVTbl {
    void* _reserved;
    HRESULT (*QueryInterface)(void* thisPointer, REFIID iid, void** ppv);
    ULONG (*AddRef)(void* thisPointer);
    ULONG (*Release)(void* thisPointer);
};

// One allocation, zero-filled, then set: the table pointer points at the table inside.
struct IUnknownInstance {
    IUnknownVTbl* vtablePtr;
    IUnknownVTbl vtable;
    Uuid factoryID;
    ULONG refCount;
};

// ---- the printing-dialog-extension interface ----
// PlugInIntf and its ten-slot table are shared with the panel modules (panels/panel-interface.h).

// ---- operations ----

HRESULT QueryInterface(void* thisPointer, REFIID iid, void** ppv);
ULONG IUnknownAddRef(void* thisPointer);
ULONG IUnknownRelease(void* thisPointer);
// Always 0; on allocation failure *objPtr is null or its table pointer is null.
OSStatus CreatePlugInInterface(PlugInIntf** objPtr);
OSStatus Retain(PMPlugInHeaderInterface* obj);
OSStatus Release(PMPlugInHeaderInterface** objPtr);
OSStatus GetAPIVersion(PMPlugInHeaderInterface* obj, PMPlugInAPIVersion* versionPtr);

// Generic entry points: the dialog operations of the same suffix call these first.
// TalmoPDEInitialize makes its session the current print session, TalmoPDETerminate
// clears it; the others do nothing. All return 0.
OSStatus TalmoPDEProlog(PMPDEContext* context, OSType* creator, std::string* userOptionKind, std::string* title,
                        uint32_t* maxH, uint32_t* maxV);
OSStatus TalmoPDEInitialize(PMPDEContext context, PMPDEFlags* flags, PMPDERef ref, ControlRef parentUserPane,
                            PMPrintSession printSession);
OSStatus TalmoPDESync(PMPDEContext context, PMPrintSession printSession, bool reinitializePlugIn);
OSStatus TalmoPDEGetSummaryText(PMPDEContext context, pl::ArrayPtr* titleArray, pl::ArrayPtr* summaryArray);
OSStatus TalmoPDEOpen(PMPDEContext context);
OSStatus TalmoPDEClose(PMPDEContext context);
OSStatus TalmoPDETerminate(PMPDEContext context, OSStatus status);

} // namespace talmo

#include "plugin/pde-shell.h"

// The factory the bundle's Info.plist names. Returns a new IUnknown instance (count 1,
// registered under the factory UUID) when `typeID` is the print dialog's extension type, else
// null. The first call also makes the library's own bundle the extension bundle.
extern "C" void* TalmoPDEPluginFactory(talmo::CFAllocatorRef allocator, talmo::CFUUIDRef typeID);
