// The platform layer: Linux stand-ins for the platform services the design speaks of.
// No Talmo knowledge lives here. Other folders include only this header.
#pragma once

#include "platform/atomic-file.h"
#include "platform/values.h"
#include "platform/plist.h"
#include "platform/status.h"
#include "platform/uuid.h"
#include "platform/strings-table.h"
#include "platform/bundle.h"
#include "platform/session.h"
#include "platform/system.h"
#include "platform/plugin-registry.h"
