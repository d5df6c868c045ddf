#include "panels/dialogs/named-paper-model_p.h"

#include "settings/paper-sizes.h"
#include "settings/stock-maps.h"
#include "toolkit/toolkit.h"

#include <QCollator>

#include <algorithm>
#include <numeric>
#include <span>

namespace talmo {

namespace {

constexpr const char* kDefaultListKey = "DefaultList";
constexpr const char* kForceUniqueNamesKey = "ForceUniqueNames";
constexpr const char* kVisibleColumnsKey = "VisibleColumns";
constexpr const char* kShowUnsupportedValuesKey = "ShowUnsupportedValues";
constexpr const char* kShowUnsupportedAttributesKey = "ShowUnsupportedAttributes";

// Column titles; the status column has a picture, not a title.
constexpr std::array<const char*, 13> kColumnTitles = {
    nullptr,       "StockName",   "StockSize",      "StockColor", "StockType",        "StockWeight", "StockPunched",
    "SidesCoated", "CoatingType", "UncoatedFinish", "Grain",      "StockDescription", "Comment"};

constexpr std::array<const char*, 4> kStatusPictures = {"NamedPaper_Blank.png", "NamedPaper_InUse.png",
                                                        "NamedPaper_Unsupported.png", "NamedPaper_Info.png"};

constexpr int32_t kTypeOrdered = 6;
constexpr int32_t kTypePrecutTab = 4;
constexpr int32_t kTypeCustom = 7;
constexpr int32_t kColorCustom = 10;
constexpr int32_t kSidesCoatedOneSide = 2;
constexpr int32_t kSidesCoatedBothSides = 3;

// Codes that a printer's list brings (from its IPP keywords) that the menu tables have no row for.
constexpr int32_t kFirstPrinterCustom = 15, kLastPrinterCustom = 21;
struct ExtraText {
    int32_t code;
    const char* key;
};
constexpr ExtraText kExtraTypes[] = {{13, "NamedPaperTypeBond"},
                                     {14, "NamedPaperTypeLetterhead"},
                                     {22, "NamedPaperOther"},
                                     {24, "NamedPaperTypeTabStock"}};
constexpr ExtraText kExtraColors[] = {{14, "NamedPaperOther"}};

QString text(const Stock::Text& t) { return t ? QString::fromStdString(*t) : QString(); }

pl::DictPtr readPreferencesDict()
{
    const pl::DictPtr file = CopyUserPreferences(kStockLibraryDomain);
    return file ? file->getDict(kStockLibraryPreferencesKey) : nullptr;
}

} // namespace

int NamedPaperColumnIndex(uint32_t column)
{
    const auto it = std::find(kNamedPaperColumns.begin(), kNamedPaperColumns.end(), column);
    return it == kNamedPaperColumns.end() ? -1 : int(it - kNamedPaperColumns.begin());
}

int NamedPaperColumnOfPreference(std::string_view name)
{
    for (size_t i = 0; i < kNamedPaperOptionalColumns.size(); ++i)
        if (name == kNamedPaperOptionalColumns[i])
            return int(i) + 2;
    return -1;
}

bool NamedPaperPreferences::columnVisible(std::string_view name) const
{
    return std::find(visibleColumns.begin(), visibleColumns.end(), name) != visibleColumns.end();
}

NamedPaperPreferences ReadNamedPaperPreferences()
{
    NamedPaperPreferences prefs;
    const pl::DictPtr dict = readPreferencesDict();
    if (!dict)
        return prefs;
    if (const auto list = dict->getInt(kDefaultListKey); list == 0 || list == 1)
        prefs.defaultList = NamedPaperPreferences::List(*list);
    prefs.forceUniqueNames = dict->getBool(kForceUniqueNamesKey).value_or(prefs.forceUniqueNames);
    prefs.showUnsupportedValues = dict->getBool(kShowUnsupportedValuesKey).value_or(prefs.showUnsupportedValues);
    prefs.showUnsupportedAttributes =
        dict->getBool(kShowUnsupportedAttributesKey).value_or(prefs.showUnsupportedAttributes);
    if (const pl::ArrayPtr columns = dict->getArray(kVisibleColumnsKey)) {
        // Names this version does not know are dropped, so a later version's file still reads.
        prefs.visibleColumns.clear();
        for (const pl::ValuePtr& v : *columns)
            if (const auto s = pl::as<pl::String>(v); s && NamedPaperColumnOfPreference(s->text) >= 0)
                prefs.visibleColumns.push_back(s->text);
    }
    return prefs;
}

bool WriteNamedPaperPreferences(const NamedPaperPreferences& prefs)
{
    pl::DictPtr dict = pl::makeDict();
    dict->setInt(kDefaultListKey, prefs.defaultList);
    dict->setBool(kForceUniqueNamesKey, prefs.forceUniqueNames);
    pl::ArrayPtr columns = pl::makeArray();
    for (const std::string& c : prefs.visibleColumns)
        columns->append(pl::makeString(c));
    dict->set(kVisibleColumnsKey, columns);
    dict->setBool(kShowUnsupportedValuesKey, prefs.showUnsupportedValues);
    dict->setBool(kShowUnsupportedAttributesKey, prefs.showUnsupportedAttributes);
    pl::DictPtr file = CopyUserPreferences(kStockLibraryDomain);
    if (!file)
        file = pl::makeDict();
    file->set(kStockLibraryPreferencesKey, dict);
    return WriteUserPreferences(kStockLibraryDomain, file);
}

NamedPaperStore StoreNamedPaper(StockLibraryList& list, StockLibrary entry, bool forceUniqueNames,
                                const std::function<bool()>& confirmReplace, const std::string& editing)
{
    const Stock::Text& name = entry.stock().customName();
    entry.setName(name.value_or(""));
    if (!editing.empty()) {
        // Keeping its own name (in any case) is no clash with itself.
        const pl::DictPtr old = list.stockList()->getDict(editing);
        const Stock::Text oldName = StockLibrary(old).stock().customName();
        if (old &&
            (!forceUniqueNames || (name && oldName && EqualIgnoringCase(*name, *oldName)) || !list.isDuplicate(name))) {
            entry.setUUID(editing);
            list.update(editing, &entry);
            return NamedPaperStore::Updated;
        }
    }
    if (forceUniqueNames && list.isDuplicate(name)) {
        if (!confirmReplace || !confirmReplace())
            return NamedPaperStore::Cancelled;
        list.replace(&entry);
        // The edited entry took another's name: that one now holds the paper.
        if (!editing.empty())
            list.remove(editing);
        return NamedPaperStore::Replaced;
    }
    list.add(&entry);
    return NamedPaperStore::Added;
}

NamedPaperTableModel::NamedPaperTableModel(const Bundle& bundle, QObject* parent)
    : QAbstractTableModel(parent), bundle_(&bundle)
{
    for (size_t i = 0; i < icons_.size(); ++i)
        if (const auto path = bundle.resourcePath(kStatusPictures[i]))
            icons_[i] = QIcon(QString::fromStdString(*path));
    unsupportedValues_ = localized("Unsupported Values");
    unsupportedAttributes_ = localized("Unsupported Attributes");
}

// Keys are the tables' static strings, so their addresses identify them.
QString NamedPaperTableModel::localized(const char* key) const
{
    auto [it, added] = localizedCache_.try_emplace(key);
    if (added)
        it->second = LocalizedText(*bundle_, key);
    return it->second;
}

QString NamedPaperTableModel::mapText(const SettingMap* map, int32_t value) const
{
    if (value == kNotSet)
        return {};
    // An exact row only: the map search falls back to a "Custom..." or first row.
    for (const SettingMap* row = map; row->key; ++row)
        if (row->ticketValue == value)
            return localized(row->key);
    const bool typeOrColor = map == _CompleteStockTypeMap || map == _CompleteStockColorMap;
    if (typeOrColor && value >= kFirstPrinterCustom && value <= kLastPrinterCustom)
        return LocalizedText(*bundle_, "NamedPaperCustomN", {value - kFirstPrinterCustom + 1});
    if (typeOrColor)
        for (const ExtraText& e : map == _CompleteStockTypeMap ? std::span<const ExtraText>(kExtraTypes)
                                                               : std::span<const ExtraText>(kExtraColors))
            if (e.code == value)
                return localized(e.key);
    return QString::number(value);
}

std::array<QString, 13> NamedPaperTableModel::cellsOf(const StockLibrary& e) const
{
    std::array<QString, 13> cells;
    const Stock& s = e.stock();
    cells[1] = QString::fromStdString(e.name());
    if (cells[1].isEmpty())
        cells[1] = text(s.customName());
    if (cells[1].isEmpty() && s == Stock())
        cells[1] = localized("PrinterDefault"); // the printer list's last row
    if (s.customNameOnly())
        return cells;
    if (s.size() != kNotSet) {
        const char* key = LocalizedKeyForPaperSizeTicketValue(CompleteStockSizeMap, s.size());
        cells[2] = key ? localized(key) : QString::number(s.size());
    }
    cells[3] = s.color() == kColorCustom ? text(s.customColor()) : mapText(_CompleteStockColorMap, s.color());
    switch (s.type()) {
    case kTypeOrdered:
        cells[4] = FormatLocalized("%@ (%d)", {text(s.customType()), s.modulus()});
        break;
    case kTypePrecutTab:
        cells[4] = FormatLocalized("%@ (%d)", {localized("StockTypePrecutTab"), s.modulus()});
        break;
    case kTypeCustom:
        cells[4] = text(s.customType());
        break;
    default:
        cells[4] = mapText(_CompleteStockTypeMap, s.type());
    }
    if (s.weight() != kNotSet)
        cells[5] = QString::number(s.weight()) + QLatin1Char(' ') + localized("gsm"); // "%d %@"
    cells[6] = mapText(_StockPunchedMap, s.punched());
    cells[7] = mapText(_SidesCoatedMap, s.sidesCoated());
    // The coating type means something only on a coated paper (it defaults to gloss).
    if (s.sidesCoated() == kSidesCoatedOneSide || s.sidesCoated() == kSidesCoatedBothSides)
        cells[8] = mapText(_CoatingTypeMap, s.coatingType());
    cells[9] = mapText(_FinishMap, s.finish());
    cells[10] = mapText(_GrainMap, s.grain());
    cells[11] = text(s.description());
    cells[12] = text(s.comment());
    return cells;
}

void NamedPaperTableModel::fill(const StockLibraryList* list, bool hideUnsupportedValues,
                                bool hideUnsupportedAttributes)
{
    beginResetModel();
    rows_.clear();
    if (list) {
        rows_.reserve(list->stockList()->size());
        for (const auto& [uuid, value] : *list->stockList()) {
            StockLibrary entry(pl::as<pl::Dictionary>(value));
            entry.setUUID(uuid); // the key is what the list answers to
            if ((hideUnsupportedValues && entry.status() == kStockEntryUnsupportedValues) ||
                (hideUnsupportedAttributes && entry.status() == kStockEntryUnsupportedAttributes))
                continue;
            auto cells = cellsOf(entry);
            rows_.push_back({std::move(entry), std::move(cells)});
        }
    }
    applySort();
    endResetModel();
}

int NamedPaperTableModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : int(rows_.size()); }

int NamedPaperTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(kNamedPaperColumns.size());
}

QVariant NamedPaperTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || size_t(index.row()) >= rows_.size())
        return {};
    const Row& row = rows_[size_t(index.row())];
    const int32_t status = row.entry.status();
    if (index.column() == 0) {
        if (role == Qt::DecorationRole)
            return status >= 0 && size_t(status) < icons_.size() ? icons_[size_t(status)] : icons_[0];
        if (role == Qt::ToolTipRole || role == Qt::AccessibleTextRole) {
            if (status == kStockEntryUnsupportedValues)
                return unsupportedValues_;
            if (status == kStockEntryUnsupportedAttributes)
                return unsupportedAttributes_;
        }
        return {};
    }
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole)
        return row.cells[size_t(index.column())];
    return {};
}

QVariant NamedPaperTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || size_t(section) >= kColumnTitles.size())
        return QAbstractTableModel::headerData(section, orientation, role);
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
        return {};
    return kColumnTitles[size_t(section)] ? localized(kColumnTitles[size_t(section)]) : QString();
}

void NamedPaperTableModel::sort(int column, Qt::SortOrder order)
{
    if (column < 0 || size_t(column) >= kNamedPaperColumns.size())
        return;
    sortColumn_ = column;
    sortOrder_ = order;
    emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    std::vector<std::string> uuids;
    for (const QModelIndex& i : before)
        uuids.push_back(rows_[size_t(i.row())].entry.uuid());
    applySort();
    QModelIndexList after;
    for (size_t i = 0; i < uuids.size(); ++i)
        after.push_back(index(rowOf(uuids[i]), before[int(i)].column()));
    changePersistentIndexList(before, after);
    emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

void NamedPaperTableModel::applySort()
{
    QCollator collator;
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    const size_t column = size_t(sortColumn_);
    // Sort keys once per sort; comparing keys is a memcmp.
    std::vector<QCollatorSortKey> keys, names;
    keys.reserve(rows_.size());
    names.reserve(rows_.size());
    for (const Row& r : rows_) {
        names.push_back(collator.sortKey(r.cells[1]));
        if (column != 1)
            keys.push_back(collator.sortKey(r.cells[column]));
    }
    if (column == 1)
        keys = names;
    std::vector<size_t> order(rows_.size());
    std::iota(order.begin(), order.end(), 0);
    const bool descending = sortOrder_ == Qt::DescendingOrder;
    std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) {
        int c = column == 0 ? (rows_[a].entry.status() > rows_[b].entry.status()) -
                                  (rows_[a].entry.status() < rows_[b].entry.status())
                            : keys[a].compare(keys[b]);
        if (descending)
            c = -c;
        return c != 0 ? c < 0 : names[a].compare(names[b]) < 0;
    });
    std::vector<Row> sorted;
    sorted.reserve(rows_.size());
    for (size_t i : order)
        sorted.push_back(std::move(rows_[i]));
    rows_ = std::move(sorted);
}

int NamedPaperTableModel::rowOf(const std::string& uuid) const
{
    for (size_t i = 0; i < rows_.size(); ++i)
        if (rows_[i].entry.uuid() == uuid)
            return int(i);
    return -1;
}

} // namespace talmo
