// The library's preferences file: the list, the menu order, the table's column widths and
// selected row share one file, so every writer reads the file, replaces its own key and writes
// the whole file back (atomically, through the preferences store).
#include "paperlib/paperlib.h"

#include <sys/stat.h>

namespace talmo {

namespace {

// The user's file when it exists, else the shipped feature database: a printer model can
// ship a starting list. Null when neither can be read.
pl::DictPtr readLibraryFile()
{
    const auto path = CopyUserPreferencesPath(kStockLibraryDomain);
    struct stat st { };
    if (path && ::stat(path->c_str(), &st) == 0)
        return CopyUserPreferences(kStockLibraryDomain);
    return pl::as<pl::Dictionary>(CopyXMLData(kStockLibraryFallbackFile));
}

// Replaces one key of the user's file, keeping the others.
bool writeLibraryKey(const char* key, const pl::ValuePtr& value)
{
    pl::DictPtr prefs = CopyUserPreferences(kStockLibraryDomain);
    if (!prefs)
        prefs = pl::makeDict();
    prefs->set(key, value);
    return WriteUserPreferences(kStockLibraryDomain, prefs);
}

bool isFourCharId(const std::string& s) { return s.size() == 4; }

std::string idString(uint32_t id)
{
    return {char(id >> 24), char((id >> 16) & 0xFF), char((id >> 8) & 0xFF), char(id & 0xFF)};
}

uint32_t idValue(const std::string& s)
{
    return (uint32_t(uint8_t(s[0])) << 24) | (uint32_t(uint8_t(s[1])) << 16) | (uint32_t(uint8_t(s[2])) << 8) |
           uint32_t(uint8_t(s[3]));
}

} // namespace

void StockLibraryList::read()
{
    stockList_ = pl::makeDict();
    if (detached_)
        return;
    if (const pl::DictPtr file = readLibraryFile())
        if (pl::DictPtr list = file->getDict(kStockLibraryStockListKey))
            stockList_ = list;
}

bool StockLibraryList::write() const
{
    if (detached_)
        return true;
    return writeLibraryKey(kStockLibraryStockListKey, stockList_);
}

void StockLibraryOrderList::read()
{
    stockOrderList_ = pl::makeArray();
    if (const pl::DictPtr file = readLibraryFile()) {
        if (const pl::ArrayPtr order = file->getArray(kStockLibraryStockMenuListKey)) {
            // Only uuid strings belong here; anything else a hand-edited file holds is dropped.
            for (const pl::ValuePtr& v : *order)
                if (pl::as<pl::String>(v) && stockOrderList_->size() < kStockOrderListLimit)
                    stockOrderList_->append(v);
        }
    }
}

bool StockLibraryOrderList::write() const { return writeLibraryKey(kStockLibraryStockMenuListKey, stockOrderList_); }

RecentNamedPapers ReadRecentNamedPapers()
{
    RecentNamedPapers recent;
    const pl::DictPtr file = readLibraryFile();
    const pl::ArrayPtr order = file ? file->getArray(kStockLibraryStockMenuListKey) : nullptr;
    const pl::DictPtr list = file ? file->getDict(kStockLibraryStockListKey) : nullptr;
    if (!order)
        return recent;
    size_t taken = 0; // the order list holds the first kStockOrderListLimit uuids of the file
    for (const pl::ValuePtr& v : *order) {
        auto uuid = pl::as<pl::String>(v);
        if (!uuid)
            continue;
        if (taken++ == kStockOrderListLimit)
            break;
        if (pl::DictPtr entry = list ? list->getDict(uuid->text) : nullptr)
            recent.entries.emplace_back(uuid->text, std::move(entry));
        else
            recent.gone.push_back(uuid->text);
    }
    return recent;
}

std::vector<StockColumnWidth> StoredColumnWidths()
{
    std::vector<StockColumnWidth> out;
    const pl::DictPtr file = readLibraryFile();
    const pl::DictPtr widths = file ? file->getDict(kStockLibraryColumnWidthsKey) : nullptr;
    if (!widths)
        return out;
    for (const auto& [key, value] : *widths) {
        const auto n = pl::as<pl::Integer>(value);
        if (!isFourCharId(key) || !n || n->value < INT16_MIN || n->value > INT16_MAX)
            continue;
        out.push_back({idValue(key), static_cast<int16_t>(n->value)});
    }
    return out;
}

bool storeColumnWidths(const StockLibraryTable& table)
{
    pl::DictPtr widths = pl::makeDict();
    for (const StockColumnWidth& c : table.columnWidths())
        widths->setInt(idString(c.column), c.width);
    return writeLibraryKey(kStockLibraryColumnWidthsKey, widths);
}

void setColumnWidths(StockLibraryTable& table)
{
    for (const StockColumnWidth& c : StoredColumnWidths())
        table.setColumnWidth(c.column, c.width);
}

std::optional<std::string> StoredSelectedRow()
{
    const pl::DictPtr file = CopyUserPreferences(kStockLibraryDomain);
    return file ? file->getString(kStockLibrarySelectedRowKey) : std::nullopt;
}

bool storeSelectedRow(const std::string& uuid)
{
    return writeLibraryKey(kStockLibrarySelectedRowKey, pl::makeString(uuid));
}

void setSelectedRow(StockLibraryTable& table)
{
    if (const auto uuid = StoredSelectedRow())
        table.revealRow(*uuid);
}

} // namespace talmo
