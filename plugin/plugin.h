// The plug-in bundle's outer shell: the factory that the plug-in loader calls by name, the
// COM-style IUnknown instance it returns, the ten-slot interface record that QueryInterface
// hands out, and the generic entry points every dialog call passes through first.
//
// Only TalmoPDEPluginFactory is exported from the bundle's library; everything else is
// reached through the records below, whose layout is the contract with the host.
#pragma once

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
using ULONG = uint32_t;
using CFAllocatorRef = void*;
using CFUUIDRef = const Uuid*;
using OSType = uint32_t;

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

struct PMPlugInAPIVersion {
    uint32_t buildVersionMajor;
    uint32_t buildVersionMinor;
    uint32_t baseVersionMajor;
    uint32_t baseVersionMinor;
};

struct PlugInIntfVTable;
// The record QueryInterface returns for the extension interface.
struct PlugInIntf {
    PlugInIntfVTable* vtable; // separate allocation of ten slots, owned by the record
    ULONG refCount;
};
// The header part of an interface record, as slots 1-3 see it.
using PMPlugInHeaderInterface = PlugInIntf;

using PMPDEContext = void*; // a panel's (or the host's) own context
using PMPDEFlags = uint32_t;
using PMPDERef = void*;   // the dialog's reference for the extension
using ControlRef = void*; // the pane the dialog gives (a widget in the dialog host)
using PMPrintSession = PrintSession*;

// Slot order is the print system's and must not change. Panels leave slots 1-3 null.
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

// The factory the bundle's Info.plist names. Returns a new IUnknown instance (count 1,
// registered under the factory UUID) when `typeID` is the print dialog's extension type, else
// null. The first call also makes the library's own bundle the extension bundle.
extern "C" void* TalmoPDEPluginFactory(talmo::CFAllocatorRef allocator, talmo::CFUUIDRef typeID);
