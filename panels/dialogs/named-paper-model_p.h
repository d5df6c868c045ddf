// What the named paper dialog needs without its widgets: the table model over a library list,
// the dialog's own preferences and the rule for storing a paper under a name.
#pragma once

#include "paperlib/paperlib.h"
#include "platform/platform.h"

#include <QAbstractTableModel>
#include <QIcon>
#include <QString>

#include <array>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

namespace talmo {

// The thirteen columns, in table order.
inline constexpr std::array<uint32_t, 13> kNamedPaperColumns = {
    kStockColumnStatus, kStockColumnName,        kStockColumnSize,        kStockColumnColor,       kStockColumnType,
    kStockColumnWeight, kStockColumnPunched,     kStockColumnSidesCoated, kStockColumnCoatingType, kStockColumnFinish,
    kStockColumnGrain,  kStockColumnDescription, kStockColumnComment};
// The columns the user may hide, by their preference names (every column but status and name).
inline constexpr std::array<const char*, 11> kNamedPaperOptionalColumns = {
    "StockSize",   "StockColor",     "StockType", "StockPunched",     "StockWeight", "SidesCoated",
    "CoatingType", "UncoatedFinish", "Grain",     "StockDescription", "Comment"};
int NamedPaperColumnIndex(uint32_t column); // -1 for an unknown id
// Table column of an optional column's preference name; -1 when unknown.
int NamedPaperColumnOfPreference(std::string_view name);

// The dialog's preferences, kept under "com.talmo.print.StockLibrary.Preferences".
struct NamedPaperPreferences {
    enum List { MyPaperList = 0, PrinterPaperList = 1 };
    List defaultList = MyPaperList;
    bool forceUniqueNames = true;
    std::vector<std::string> visibleColumns{kNamedPaperOptionalColumns.begin(), kNamedPaperOptionalColumns.end()};
    bool showUnsupportedValues = true;
    bool showUnsupportedAttributes = true;

    bool columnVisible(std::string_view name) const;
};
NamedPaperPreferences ReadNamedPaperPreferences();
bool WriteNamedPaperPreferences(const NamedPaperPreferences& prefs);

// Stores `entry` (its paper's custom name is the name) in the user's list under the duplicate
// policy: with unique names forced and the name already present, `confirmReplace` decides
// between `replace` and storing nothing. `editing` names the entry being edited: it is updated
// in place while its name stays its own.
enum class NamedPaperStore { Added, Updated, Replaced, Cancelled };
NamedPaperStore StoreNamedPaper(StockLibraryList& list, StockLibrary entry, bool forceUniqueNames,
                                const std::function<bool()>& confirmReplace, const std::string& editing = {});

// One row per entry of a library list, its cells rebuilt once per fill. Sorting compares the
// shown texts in the user's locale with numbers by value ("90 gsm" before "120 gsm"); the status
// column sorts by status; ties keep the name order, then the list's order.
class NamedPaperTableModel : public QAbstractTableModel {
public:
    explicit NamedPaperTableModel(const Bundle& bundle, QObject* parent = nullptr);

    // Rebuilds every row from `list` (each entry validated as it is rebuilt). `filter` may hide
    // the unsupported entries of the user's list.
    void fill(const StockLibraryList* list, bool hideUnsupportedValues = false, bool hideUnsupportedAttributes = false);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    void sort(int column, Qt::SortOrder order) override;

    const StockLibrary& entry(int row) const { return rows_[size_t(row)].entry; }
    int rowOf(const std::string& uuid) const; // -1 when absent

private:
    struct Row {
        StockLibrary entry;
        std::array<QString, 13> cells;
    };
    std::array<QString, 13> cellsOf(const StockLibrary& entry) const;
    QString mapText(const SettingMap* map, int32_t value) const;
    QString localized(const char* key) const;
    void applySort();

    const Bundle* bundle_;
    std::vector<Row> rows_;
    std::array<QIcon, 4> icons_; // by status
    mutable std::unordered_map<const char*, QString> localizedCache_;
    QString unsupportedValues_, unsupportedAttributes_;
    int sortColumn_ = 1;
    Qt::SortOrder sortOrder_ = Qt::AscendingOrder;
};

} // namespace talmo
