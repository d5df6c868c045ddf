// Input history of text fields: per field, the strings entered before, newest first, kept in
// the user's "com.talmo.print.inputhistory.plist" (a dictionary from history key to array).
#pragma once

#include "platform/platform.h"

#include <string>
#include <string_view>
#include <vector>

namespace talmo {

// The history stored under `historyKey`, newest first; non-string entries are skipped.
// Empty when the file, the key or the array is missing.
std::vector<std::string> ReadInputHistory(std::string_view historyKey);

// The update rule on an in-memory preferences dictionary: an empty text, or one already in
// the history, changes nothing (false). Otherwise the text goes to the front, the array is cut
// to `limit` entries when limit > 0, and the array is stored under `historyKey` (true).
bool UpdateInputHistory(pl::Dictionary& preferences, std::string_view historyKey, std::string_view text, int32_t limit);

enum class HistoryWrite { Unchanged, Written, Failed };
// Applies UpdateInputHistory to the history file and writes it back when it changed.
HistoryWrite AddToInputHistory(std::string_view historyKey, std::string_view text, int32_t limit);

} // namespace talmo
