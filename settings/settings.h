// Ticket access, setting maps and their tables, and the user preferences store.
// Other folders include only this header.
#pragma once

#include "platform/platform.h"
#include "settings/prefs.h"
#include "settings/ticket-access.h"
#include "settings/ticket-keys.h"
#include "settings/maps.h"
#include "settings/menu-model.h"
#include "settings/history.h"
#include "settings/numbers.h"
#include "settings/environment.h"
#include "settings/xml-entities.h"
#include "settings/stock-maps.h"
#include "settings/paper-sizes.h"
