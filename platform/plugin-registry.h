// The plug-in loader's instance registry: a plug-in registers each live instance under its
// factory's UUID and removes it when the instance is freed.
//
// The registry is process-wide across a host and the plug-ins it loads. A plug-in carries a
// copy of this code, hidden inside its library; at first use it looks for the host's registry
// (the C functions below, found with dlsym in the global scope) and uses it when the host
// exports them (link talmo_platform into an executable with ENABLE_EXPORTS), else its own.
#pragma once

#include "platform/uuid.h"

#include <cstddef>
#include <cstdint>

namespace talmo {

void CFPlugInAddInstanceForFactory(const Uuid& factory);
// Removing an instance that was never added is ignored.
void CFPlugInRemoveInstanceForFactory(const Uuid& factory);
// Instances live under `factory` in the registry in use.
size_t CFPlugInInstanceCountForFactory(const Uuid& factory);

} // namespace talmo

// The registry's C surface, exported by hosts; `factory` points at 16 UUID bytes.
extern "C" {
void TalmoPlugInRegistryAdd(const uint8_t* factory);
void TalmoPlugInRegistryRemove(const uint8_t* factory);
size_t TalmoPlugInRegistryCount(const uint8_t* factory);
}
