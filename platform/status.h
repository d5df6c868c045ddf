// Status codes of the platform kind: 0 is success; nothing throws across a module boundary.
#pragma once

#include <cstdint>

namespace talmo {

using OSStatus = int32_t;

inline constexpr OSStatus noErr = 0;
inline constexpr OSStatus paramErr = -50; // bad parameter; the field stays unchanged
inline constexpr OSStatus memFullErr = -108;
inline constexpr OSStatus kPMNoContext = -9530;       // missing panel context
inline constexpr OSStatus kPMNoSession = -30879;      // missing print session
inline constexpr OSStatus kImportFileFailed = -208;   // a TPIF file could not be imported
inline constexpr uint32_t E_NOINTERFACE = 0x80000004; // unknown interface

// The not-set value: printer default for every numeric setting.
inline constexpr int32_t kNotSet = INT32_MIN;

} // namespace talmo
