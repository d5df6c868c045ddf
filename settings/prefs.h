// User preferences store: per-user files in the preferences folder and shared files in the
// maker folder "Talmo/". Locations follow XDG: ${XDG_CONFIG_HOME:-~/.config}/talmo/ per user,
// ${XDG_DATA_HOME:-~/.local/share}/Talmo/ for the maker folder, and read-only shipped defaults
// in $XDG_DATA_DIRS/talmo/.
#pragma once

#include "platform/platform.h"

#include <optional>
#include <string>
#include <string_view>

namespace talmo {

// Path of `fileName` in the maker folder, creating the folder when missing; nullopt when
// no folder can be found or made.
std::optional<std::string> CopyPreferenceFileURL(std::string_view fileName);
// The property list stored in the shared file, or null.
pl::ValuePtr CopyXMLData(std::string_view fileName);
// The per-user dictionary; a missing or unreadable file yields a new empty dictionary.
// Null only when the preferences folder cannot be found.
pl::DictPtr CopyUserPreferences(std::string_view fileName);
// Writes the per-user file atomically; true when the whole file was written.
bool WriteUserPreferences(std::string_view fileName, const pl::ValuePtr& plist);

} // namespace talmo
