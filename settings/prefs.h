// User preferences store: per-user files in the preferences folder and shared files in the
// maker folder "Talmo/". Locations follow XDG: ${XDG_CONFIG_HOME:-~/.config}/talmo/ per user,
// ${XDG_DATA_HOME:-~/.local/share}/Talmo/ for the maker folder, and read-only shipped defaults
// in $XDG_DATA_DIRS/talmo/ (default /usr/local/share/:/usr/share/), then in the extension
// bundle's Resources/. File names are plain names:
// one holding a '/', or "." or "..", is refused like a missing folder.
#pragma once

#include "platform/platform.h"

#include <optional>
#include <string>
#include <string_view>

namespace talmo {

// Path of `fileName` in the maker folder, creating the folder (mode 0700) when missing;
// nullopt when no folder can be found or made.
std::optional<std::string> CopyPreferenceFileURL(std::string_view fileName);
// The property list stored in the shared file, or null. When the maker folder has no such file,
// the shipped default of that name is read instead (see CopySharedDefaultsPath). A file that
// does not parse prints "CopyXMLData()::CFPropertyListCreateFromXMLData() error: " and the
// parser's message on stderr.
pl::ValuePtr CopyXMLData(std::string_view fileName);
// The per-user dictionary; a missing or unreadable file, or one whose root is not a dictionary,
// yields a new empty dictionary. Null only when the preferences folder cannot be found.
pl::DictPtr CopyUserPreferences(std::string_view fileName);
// Writes the per-user file atomically (mode 0600, folder 0700); true when the whole file was
// written. A failure prints "WriteUserPreferences() failed (<errno>)" and leaves the old file.
bool WriteUserPreferences(std::string_view fileName, const pl::ValuePtr& plist);

// Path of the per-user file (whether or not it exists), for callers that must tell a missing
// file from an empty one; nullopt when the preferences folder cannot be found.
std::optional<std::string> CopyUserPreferencesPath(std::string_view fileName);
// Path of the first existing file named `fileName` among the maker folder, each
// $XDG_DATA_DIRS entry's "talmo/" folder and the extension bundle's Resources/, in that order
// (the shipped, read-only defaults such as "TalmoFeatures.plist"); nullopt when there is none.
// Creates nothing.
std::optional<std::string> CopySharedDefaultsPath(std::string_view fileName);

} // namespace talmo
