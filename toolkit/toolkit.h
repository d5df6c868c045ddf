// The dialog toolkit: Qt 6 Widgets stand-ins for the platform's controls, events and interface
// descriptions, and the generic dialogs every panel opens.
#pragma once

#include "toolkit/events.h"
#include "toolkit/interface-description.h"
#include "toolkit/help.h"
#include "toolkit/localized-description.h"
