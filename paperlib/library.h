// Named paper library: entries wrapping one Stock each, the persisted user list (or a detached
// scratch list for the printer's papers), the most-recently-used menu order, validation against
// the printer's setting maps, and the library table's stored layout.
#pragma once

#include "ticket/ticket.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace talmo {

// Preferences file of the library; its keys are in settings/ticket-keys.h.
inline constexpr const char* kStockLibraryDomain = kStockLibraryFile;
inline constexpr const char* kStockLibraryFallbackFile = "TalmoFeatures.plist";

// Keys of an entry's dictionary form.
inline constexpr const char* kStockEntryStatusKey = "EntryStatus";
inline constexpr const char* kStockEntryStockKey = "Stock";
inline constexpr const char* kStockEntryUUIDKey = kStockLibraryUUIDKey;
inline constexpr const char* kStockEntryNameKey = kStockLibraryNameKey;

// Entry status.
inline constexpr int32_t kStockEntryPlain = 0;
inline constexpr int32_t kStockEntryInUse = 1;
inline constexpr int32_t kStockEntryUnsupportedValues = 2;
inline constexpr int32_t kStockEntryUnsupportedAttributes = 3;

// The menu shows at most this many recently used papers.
inline constexpr size_t kStockOrderListLimit = 25;

// One library entry. Entries are transient: the list keeps only their dictionary form, and
// every operation rebuilds an entry, works on it and drops it.
class StockLibrary {
public:
    StockLibrary() = default;
    // Rebuilds an entry from its dictionary form and validates it against the printer, so a
    // freshly read entry's status always reflects the current printer. Null gives a default
    // entry (then validated).
    explicit StockLibrary(const pl::DictPtr& entry);
    // Copies status, stock, uuid and name; a copy is never counted as referenced.
    StockLibrary(const StockLibrary& other);
    StockLibrary& operator=(const StockLibrary& other);
    virtual ~StockLibrary() = default;

    // Dictionary form; the uuid and the name only when not empty. The caller owns it.
    virtual pl::DictPtr asTicket() const;

    int32_t status() const { return status_; }
    void setStatus(long status) { status_ = static_cast<int32_t>(status); }
    Stock& stock() { return stock_; }
    const Stock& stock() const { return stock_; }
    void setStock(const Stock& stock) { stock_ = stock; }
    const std::string& uuid() const { return uuid_; }
    void setUUID(std::string uuid) { uuid_ = std::move(uuid); }
    const std::string& name() const { return name_; }
    void setName(std::string name) { name_ = std::move(name); }
    int32_t referenceCount() const { return referenceCount_; }
    void setReferenceCount(long count) { referenceCount_ = static_cast<int32_t>(count); }

    // Status 2 when a value is not offered by the printer, else 3 when finish or grain is set
    // although offered, else the status stays (0 or 1).
    void validateStockEntry();

private:
    int32_t status_ = kStockEntryPlain;
    Stock stock_;
    int32_t referenceCount_ = 0;
    std::string uuid_;
    std::string name_;
};

// The user's list (persisted) or a scratch list (detached: never read or written). A persisted
// list is written after every mutation and once more when destroyed.
class StockLibraryList {
public:
    StockLibraryList();
    explicit StockLibraryList(bool detached);
    ~StockLibraryList();
    StockLibraryList(const StockLibraryList&) = delete;
    StockLibraryList& operator=(const StockLibraryList&) = delete;

    // Gives the entry a new uuid, stores it and returns the uuid ("" for a null entry).
    std::string add(StockLibrary* entry);
    // Puts the entry's paper into the first stored entry whose paper has the same custom name
    // (ignoring case), keeping that entry's uuid, name and status. Stores nothing when no
    // entry has the name.
    void replace(const StockLibrary* entry);
    // True when a stored paper's custom name equals `name` ignoring case. A null name never
    // matches.
    bool isDuplicate(const Stock::Text& name) const;
    void update(const std::string& uuid, const StockLibrary* entry);
    void remove(const std::string& uuid);
    // Uuid of the first entry whose paper equals `stock`.
    std::optional<std::string> findMatch(const Stock& stock) const;
    void setInUse(const std::string& uuid);
    void setNotInUse(const std::string& uuid);
    // Resets every entry's mark to 0 except the unsupported-values mark.
    void clearStatus();

    // The dictionary itself: uuid -> entry dictionary, in file order.
    const pl::DictPtr& stockList() const { return stockList_; }
    bool detached() const { return detached_; }

    void read();
    // True when the file was written (a detached list never writes and answers true).
    bool write() const;

private:
    void setStatusOf(const std::string& uuid, int32_t status);

    pl::DictPtr stockList_ = pl::makeDict();
    bool detached_ = false;
};

// Uuids of the most recently used named papers, newest first, at most 25, no repeats.
class StockLibraryOrderList {
public:
    StockLibraryOrderList();
    ~StockLibraryOrderList();
    StockLibraryOrderList(const StockLibraryOrderList&) = delete;
    StockLibraryOrderList& operator=(const StockLibraryOrderList&) = delete;

    const pl::ArrayPtr& stockOrderList() const { return stockOrderList_; }
    void clearOrderList();
    void updateOrderList(const std::optional<std::string>& uuid);
    void remove(const std::string& uuid);
    void read();
    bool write() const;

private:
    pl::ArrayPtr stockOrderList_ = pl::makeArray();
};

// Marks what the job uses: clears the marks, then marks in use the entry of the job's paper
// and of every special page's paper (in the order given: the pages of the inserts and the
// exception lists, then the covers). Null pointers and papers without a custom name are
// skipped.
void markStockStatus(StockLibraryList& list, const Stock* jobStock, std::span<const Stock* const> pagesStocks);

// Repairs a paper taken from the library for use: every attribute the printer does not offer
// becomes not set (for a sides-coated value not offered it is the coating type that is reset);
// when anything changed, the paper no longer claims its library name.
void validateAndFixStockEntry(Stock& stock);

// Library table columns (four-character ids).
inline constexpr uint32_t kStockColumnStatus = FourCC("StAt");
inline constexpr uint32_t kStockColumnName = FourCC("NaMe");
inline constexpr uint32_t kStockColumnSize = FourCC("SiZe");
inline constexpr uint32_t kStockColumnColor = FourCC("CoLr");
inline constexpr uint32_t kStockColumnType = FourCC("TyPe");
inline constexpr uint32_t kStockColumnWeight = FourCC("WeIg");
inline constexpr uint32_t kStockColumnPunched = FourCC("HoLe");
inline constexpr uint32_t kStockColumnSidesCoated = FourCC("SdCt");
inline constexpr uint32_t kStockColumnCoatingType = FourCC("CtTy");
inline constexpr uint32_t kStockColumnFinish = FourCC("UnCt");
inline constexpr uint32_t kStockColumnGrain = FourCC("GrAi");
inline constexpr uint32_t kStockColumnDescription = FourCC("DeSc");
inline constexpr uint32_t kStockColumnComment = FourCC("CoMm");

struct StockColumnWidth {
    uint32_t column;
    int16_t width;
};

// What the library table offers to have its layout stored and restored (the dialog implements
// it).
class StockLibraryTable {
public:
    virtual ~StockLibraryTable() = default;
    virtual std::vector<StockColumnWidth> columnWidths() const = 0;
    virtual void setColumnWidth(uint32_t column, int16_t width) = 0;
    virtual std::optional<std::string> selectedRow() const = 0;
    virtual void revealRow(const std::string& uuid) = 0;
};

// The paper menus' recent named papers, newest first and at most kStockOrderListLimit, read
// once and nothing written back (building a menu must not rewrite the file): each order-list
// uuid with its entry, and the uuids whose entry has left the list.
struct RecentNamedPapers {
    std::vector<std::pair<std::string, pl::DictPtr>> entries;
    std::vector<std::string> gone;
};
RecentNamedPapers ReadRecentNamedPapers();

// The stored widths (with the shipped defaults file as fallback when the user file does not
// exist); entries that are not a four-byte id with a 16-bit width are skipped.
std::vector<StockColumnWidth> StoredColumnWidths();
bool storeColumnWidths(const StockLibraryTable& table);
void setColumnWidths(StockLibraryTable& table);
std::optional<std::string> StoredSelectedRow();
bool storeSelectedRow(const std::string& uuid);
void setSelectedRow(StockLibraryTable& table);

} // namespace talmo
