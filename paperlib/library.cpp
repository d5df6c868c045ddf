// Library entries, the user's list and the menu order: the rules. Reading and writing the
// preferences file is in library-store.cpp.
#include "paperlib/paperlib.h"

#include "platform/uuid.h"

namespace talmo {

namespace {

// The printer does not offer `value` in `map`.
bool notOffered(const SettingMap* map, int32_t value) { return TicketToUI(map, value) == -1; }

// A weight the map does not list is still accepted between 64 and 300 gsm.
bool weightUnsupported(int32_t weight) { return notOffered(_WeightMap, weight) && (weight <= 63 || weight > 300); }

// Set although the printer offers it: finish and grain the printer cannot honour.
bool offeredButSet(const SettingMap* map, int32_t value) { return !notOffered(map, value) && value != kNotSet; }

} // namespace

// --- StockLibrary ---

StockLibrary::StockLibrary(const pl::DictPtr& entry)
{
    if (entry) {
        stock_ = Stock(entry->getDict(kStockEntryStockKey));
        if (const auto status = entry->getInt(kStockEntryStatusKey);
            status && *status >= INT32_MIN && *status <= INT32_MAX)
            status_ = static_cast<int32_t>(*status);
        if (auto uuid = entry->getString(kStockEntryUUIDKey))
            uuid_ = std::move(*uuid);
        if (auto name = entry->getString(kStockEntryNameKey))
            name_ = std::move(*name);
    }
    validateStockEntry();
}

StockLibrary::StockLibrary(const StockLibrary& other)
    : status_(other.status_), stock_(other.stock_), uuid_(other.uuid_), name_(other.name_)
{
}

StockLibrary& StockLibrary::operator=(const StockLibrary& other)
{
    if (this != &other) {
        status_ = other.status_;
        stock_ = other.stock_;
        uuid_ = other.uuid_;
        name_ = other.name_;
    }
    referenceCount_ = 0;
    return *this;
}

pl::DictPtr StockLibrary::asTicket() const
{
    pl::DictPtr stock = stock_.asTicket();
    if (!stock)
        return nullptr;
    pl::DictPtr d = pl::makeDict();
    d->setInt(kStockEntryStatusKey, status_);
    d->set(kStockEntryStockKey, stock);
    if (!uuid_.empty())
        d->setString(kStockEntryUUIDKey, uuid_);
    if (!name_.empty())
        d->setString(kStockEntryNameKey, name_);
    return d;
}

void StockLibrary::validateStockEntry()
{
    const Stock& s = stock_;
    const bool unsupportedValue = notOffered(_StockColorMap, s.color()) || notOffered(_StockTypeMap, s.type()) ||
                                  notOffered(_StockPunchedMap, s.punched()) || weightUnsupported(s.weight()) ||
                                  notOffered(_SidesCoatedMap, s.sidesCoated()) || notOffered(_FinishMap, s.finish()) ||
                                  notOffered(_GrainMap, s.grain());
    const bool unsupportedAttribute = offeredButSet(_FinishMap, s.finish()) || offeredButSet(_GrainMap, s.grain());
    if (unsupportedValue)
        status_ = kStockEntryUnsupportedValues;
    else if (unsupportedAttribute)
        status_ = kStockEntryUnsupportedAttributes;
}

// --- StockLibraryList ---

StockLibraryList::StockLibraryList() { read(); }

StockLibraryList::StockLibraryList(bool detached) : detached_(detached)
{
    if (!detached_)
        read();
}

StockLibraryList::~StockLibraryList()
{
    if (!detached_)
        write();
}

std::string StockLibraryList::add(StockLibrary* entry)
{
    if (!entry)
        return {};
    std::string key = Uuid::generate().toString();
    entry->setUUID(key);
    if (pl::DictPtr d = entry->asTicket())
        stockList_->set(key, d);
    if (!detached_)
        write();
    return key;
}

void StockLibraryList::replace(const StockLibrary* entry)
{
    if (!entry)
        return;
    const Stock::Text& wanted = entry->stock().customName();
    if (wanted) {
        // Keys first: update() changes the dictionary being walked.
        std::vector<std::string> keys;
        for (const auto& [key, value] : *stockList_)
            keys.push_back(key);
        for (const std::string& key : keys) {
            const pl::DictPtr d = pl::as<pl::Dictionary>(stockList_->get(key));
            if (!d)
                continue;
            StockLibrary existing(d);
            const Stock::Text& name = existing.stock().customName();
            if (name && EqualIgnoringCase(*name, *wanted)) {
                existing.setStock(entry->stock());
                update(key, &existing);
                break;
            }
        }
    }
    if (!detached_)
        write();
}

bool StockLibraryList::isDuplicate(const Stock::Text& name) const
{
    if (!name)
        return false;
    for (const auto& [key, value] : *stockList_) {
        const pl::DictPtr d = pl::as<pl::Dictionary>(value);
        if (!d)
            continue;
        const StockLibrary entry(d);
        const Stock::Text& own = entry.stock().customName();
        if (own && !own->empty() && EqualIgnoringCase(*own, *name))
            return true;
    }
    return false;
}

void StockLibraryList::update(const std::string& uuid, const StockLibrary* entry)
{
    if (entry) {
        if (pl::DictPtr d = entry->asTicket())
            stockList_->set(uuid, d);
    }
    if (!detached_)
        write();
}

void StockLibraryList::remove(const std::string& uuid)
{
    stockList_->remove(uuid);
    if (!detached_)
        write();
}

std::optional<std::string> StockLibraryList::findMatch(const Stock& stock) const
{
    for (const auto& [key, value] : *stockList_) {
        const pl::DictPtr d = pl::as<pl::Dictionary>(value);
        if (d && StockLibrary(d).stock() == stock)
            return key;
    }
    return std::nullopt;
}

void StockLibraryList::setStatusOf(const std::string& uuid, int32_t status)
{
    const pl::DictPtr d = pl::as<pl::Dictionary>(stockList_->get(uuid));
    if (!d)
        return;
    StockLibrary entry(d);
    entry.setStatus(status);
    update(uuid, &entry);
}

void StockLibraryList::setInUse(const std::string& uuid) { setStatusOf(uuid, kStockEntryInUse); }

void StockLibraryList::setNotInUse(const std::string& uuid) { setStatusOf(uuid, kStockEntryPlain); }

void StockLibraryList::clearStatus()
{
    std::vector<std::string> keys;
    for (const auto& [key, value] : *stockList_)
        keys.push_back(key);
    for (const std::string& key : keys) {
        const pl::DictPtr d = pl::as<pl::Dictionary>(stockList_->get(key));
        if (!d)
            continue;
        StockLibrary entry(d);
        if (entry.status() == kStockEntryUnsupportedValues)
            continue;
        entry.setStatus(kStockEntryPlain);
        update(key, &entry);
    }
}

// --- StockLibraryOrderList ---

StockLibraryOrderList::StockLibraryOrderList() { read(); }

StockLibraryOrderList::~StockLibraryOrderList() { write(); }

void StockLibraryOrderList::clearOrderList() { stockOrderList_ = pl::makeArray(); }

namespace {

void removeAll(pl::Array& a, const std::string& uuid)
{
    for (size_t i = a.size(); i-- > 0;) {
        const auto s = pl::as<pl::String>(a.at(i));
        if (s && s->text == uuid)
            a.removeAt(i);
    }
}

} // namespace

void StockLibraryOrderList::updateOrderList(const std::optional<std::string>& uuid)
{
    if (!uuid)
        return;
    removeAll(*stockOrderList_, *uuid);
    stockOrderList_->insert(0, pl::makeString(*uuid));
    while (stockOrderList_->size() > kStockOrderListLimit)
        stockOrderList_->removeAt(stockOrderList_->size() - 1);
    write();
}

void StockLibraryOrderList::remove(const std::string& uuid)
{
    removeAll(*stockOrderList_, uuid);
    write();
}

// --- what the dialog does with the list ---

void markStockStatus(StockLibraryList& list, const Stock* jobStock, std::span<const Stock* const> pagesStocks)
{
    list.clearStatus();
    auto mark = [&list](const Stock* stock) {
        if (!stock || !stock->customName() || stock->customName()->empty())
            return;
        if (const auto uuid = list.findMatch(*stock))
            list.setInUse(*uuid);
    };
    mark(jobStock);
    for (const Stock* page : pagesStocks)
        mark(page);
}

void validateAndFixStockEntry(Stock& stock)
{
    bool changed = false;
    auto reset = [&changed](int32_t value, const SettingMap* map, auto setter) {
        if (notOffered(map, value)) {
            setter(kNotSet);
            changed = true;
        }
    };
    reset(stock.color(), _StockColorMap, [&](int32_t v) { stock.setColor(v); });
    reset(stock.type(), _StockTypeMap, [&](int32_t v) { stock.setType(v); });
    reset(stock.punched(), _StockPunchedMap, [&](int32_t v) { stock.setPunched(v); });
    if (weightUnsupported(stock.weight())) {
        stock.setWeight(kNotSet);
        changed = true;
    }
    reset(stock.finish(), _FinishMap, [&](int32_t v) { stock.setFinish(v); });
    reset(stock.grain(), _GrainMap, [&](int32_t v) { stock.setGrain(v); });
    // A sides-coated value the printer lacks resets the coating type; the sides stay.
    if (notOffered(_SidesCoatedMap, stock.sidesCoated())) {
        stock.setCoatingType(kNotSet);
        changed = true;
    }
    if (changed) {
        stock.setCustomName(std::string());
        stock.setCustomNameOnly(false);
    }
}

} // namespace talmo
