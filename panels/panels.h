// The six built-in panels. Each entry point returns the panel's interface record: the
// ten-slot record of the extension with slots 1-3 null. The host finds them by name in the
// bundle's library, so they are exported beside the factory (plugin/exports.map).
#pragma once

#include "panels/panel-interface.h"

#define TALMO_PANEL_ENTRY_POINT extern "C" __attribute__((visibility("default")))

TALMO_PANEL_ENTRY_POINT talmo::OSStatus GetPaperOutputPanelInterface(talmo::PlugInIntf** intf);
TALMO_PANEL_ENTRY_POINT talmo::OSStatus GetSpecialPagesPanelInterface(talmo::PlugInIntf** intf);
TALMO_PANEL_ENTRY_POINT talmo::OSStatus GetImageOptionsPanelInterface(talmo::PlugInIntf** intf);
TALMO_PANEL_ENTRY_POINT talmo::OSStatus GetJobNotesPanelInterface(talmo::PlugInIntf** intf);
TALMO_PANEL_ENTRY_POINT talmo::OSStatus GetBookletWatermarkPanelInterface(talmo::PlugInIntf** intf);
TALMO_PANEL_ENTRY_POINT talmo::OSStatus GetAdvancedPanelInterface(talmo::PlugInIntf** intf);
