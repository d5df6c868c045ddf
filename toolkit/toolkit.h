// The dialog toolkit: Qt 6 Widgets stand-ins for the platform's controls, events and interface
// descriptions, and the generic dialogs every panel opens.
#pragma once

#include "toolkit/events.h"
#include "toolkit/interface-description.h"
#include "toolkit/control-replace.h"
#include "toolkit/color-swatch.h"
#include "toolkit/spin-control.h"
#include "toolkit/history-combo-box.h"
#include "toolkit/static-text.h"
#include "toolkit/popup-menus.h"
#include "toolkit/localized-labels.h"
#include "toolkit/input-limit.h"
#include "toolkit/custom-value-dialog.h"
#include "toolkit/private-bundle.h"
#include "toolkit/help.h"
#include "toolkit/localized-description.h"
