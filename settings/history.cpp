#include "settings/settings.h"

namespace talmo {

std::vector<std::string> ReadInputHistory(std::string_view historyKey)
{
    std::vector<std::string> history;
    pl::DictPtr prefs = CopyUserPreferences(kInputHistoryFile);
    if (!prefs)
        return history;
    pl::ArrayPtr entries = prefs->getArray(historyKey);
    if (!entries)
        return history;
    for (const pl::ValuePtr& v : *entries)
        if (auto s = pl::as<pl::String>(v))
            history.push_back(s->text);
    return history;
}

bool UpdateInputHistory(pl::Dictionary& preferences, std::string_view historyKey, std::string_view text, int32_t limit)
{
    if (text.empty())
        return false;
    pl::ArrayPtr entries = preferences.getArray(historyKey);
    if (entries) {
        for (const pl::ValuePtr& v : *entries) {
            auto s = pl::as<pl::String>(v);
            if (s && s->text == text)
                return false;
        }
    } else {
        // Missing, or something other than an array: start a fresh history.
        entries = pl::makeArray();
    }
    entries->insert(0, pl::makeString(std::string(text)));
    if (limit > 0)
        while (entries->size() > static_cast<size_t>(limit))
            entries->removeAt(entries->size() - 1);
    preferences.set(historyKey, entries);
    return true;
}

HistoryWrite AddToInputHistory(std::string_view historyKey, std::string_view text, int32_t limit)
{
    pl::DictPtr prefs = CopyUserPreferences(kInputHistoryFile);
    if (!prefs)
        return HistoryWrite::Failed;
    if (!UpdateInputHistory(*prefs, historyKey, text, limit))
        return HistoryWrite::Unchanged;
    return WriteUserPreferences(kInputHistoryFile, prefs) ? HistoryWrite::Written : HistoryWrite::Failed;
}

} // namespace talmo
