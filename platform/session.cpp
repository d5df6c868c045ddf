#include "platform/session.h"

#include "platform/bundle.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace talmo {

// ---- Ticket ----

const Ticket::Item* Ticket::find(std::string_view key) const
{
    for (const auto& [k, item] : items_)
        if (k == key)
            return &item;
    return nullptr;
}

pl::ValuePtr Ticket::get(std::string_view key) const
{
    const Item* item = find(key);
    return item ? pl::deepCopy(item->value) : nullptr;
}

OSStatus Ticket::set(std::string_view key, const pl::ValuePtr& value, std::string_view creator, bool locked)
{
    if (key.empty() || creator.empty())
        return paramErr;
    if (isLocked(key))
        return kPMTicketItemLocked;
    replace(key, value, creator, locked);
    return noErr;
}

void Ticket::replace(std::string_view key, const pl::ValuePtr& value, std::string_view creator, bool locked)
{
    auto it = std::find_if(items_.begin(), items_.end(), [&](const auto& e) { return e.first == key; });
    if (!value) {
        if (it != items_.end())
            items_.erase(it);
        return;
    }
    Item item{pl::deepCopy(value), std::string(creator), locked};
    if (it != items_.end())
        it->second = std::move(item);
    else
        items_.emplace_back(std::string(key), std::move(item));
}

OSStatus Ticket::remove(std::string_view key)
{
    auto it = std::find_if(items_.begin(), items_.end(), [&](const auto& e) { return e.first == key; });
    if (it == items_.end())
        return noErr;
    if (it->second.locked)
        return kPMTicketItemLocked;
    items_.erase(it);
    return noErr;
}

bool Ticket::contains(std::string_view key) const { return find(key) != nullptr; }

std::optional<std::string> Ticket::creatorOf(std::string_view key) const
{
    const Item* item = find(key);
    return item ? std::optional<std::string>(item->creator) : std::nullopt;
}

bool Ticket::isLocked(std::string_view key) const
{
    const Item* item = find(key);
    return item && item->locked;
}

std::vector<std::string> Ticket::keys() const
{
    std::vector<std::string> out;
    out.reserve(items_.size());
    for (const auto& e : items_)
        out.push_back(e.first);
    return out;
}

pl::DictPtr Ticket::asDictionary() const
{
    auto d = pl::makeDict();
    for (const auto& [k, item] : items_)
        d->set(k, pl::deepCopy(item.value));
    return d;
}

OSStatus Ticket::loadDictionary(const pl::DictPtr& dict, std::string_view creator)
{
    if (!dict || creator.empty())
        return paramErr;
    for (const auto& [k, v] : *dict) {
        if (k.empty())
            return paramErr;
        if (isLocked(k))
            return kPMTicketItemLocked;
    }
    for (const auto& [k, v] : *dict)
        set(k, v, creator);
    return noErr;
}

// ---- printers ----

namespace {

bool fileExists(const std::string& p)
{
    std::error_code ec;
    return !p.empty() && std::filesystem::is_regular_file(p, ec);
}

} // namespace

Printer DemoPrinter()
{
    Printer p;
    p.name = "Talmo_Studio_Press";
    p.deviceURI = "file:///dev/null";
    p.makeAndModel = "Talmo Studio Press";
    p.isDemo = true;
    constexpr const char* kDemoPpd = "ppd/talmo-studio-press.ppd";
    if (Bundle* b = ExtensionBundle())
        if (auto path = b->resourcePath(kDemoPpd))
            p.ppdPath = *path;
    if (p.ppdPath.empty())
        if (const char* src = std::getenv("TALMO_SOURCE_DIR"); src && *src) {
            std::string path = std::string(src) + "/resources/" + kDemoPpd;
            if (fileExists(path))
                p.ppdPath = path;
        }
    return p;
}

// ---- session ----

namespace {

// Handles are unique in the process, so a handle of one session never names a ticket of
// another; they start at 1 and stay within a signed 32-bit number.
int32_t nextTicketHandle()
{
    static std::atomic<int32_t> next{1};
    int32_t h = next.fetch_add(1);
    if (h <= 0) { // wrapped after two billion tickets: start over rather than go negative
        next = 2;
        h = 1;
    }
    return h;
}

} // namespace

PrintSession::PrintSession() : dict_(pl::makeDict())
{
    for (const char* name : {kPMPrintSettingsTicket, kPMPageFormatTicket, kPMPrinterInfoTicket}) {
        int32_t h = nextTicketHandle();
        tickets_.emplace_back(h, std::make_unique<Ticket>());
        dict_->setInt(name, h);
    }
    setPrinter(DemoPrinter());
}

PrintSession::~PrintSession()
{
    setPrinter(Printer{});
    if (GetCurrentPrintSession() == this)
        SetCurrentPrintSession(nullptr);
}

Ticket* PrintSession::ticketForHandle(int64_t handle) const
{
    for (const auto& [h, t] : tickets_)
        if (h == handle)
            return t.get();
    return nullptr;
}

Ticket* PrintSession::ticket(std::string_view name) const
{
    auto h = dict_->getInt(name);
    return h ? ticketForHandle(*h) : nullptr;
}

void PrintSession::setPrinter(Printer printer, bool ownsPpd)
{
    if (ownsPpd_ && !printer_.ppdPath.empty() && printer_.ppdPath != printer.ppdPath)
        std::remove(printer_.ppdPath.c_str());
    printer_ = std::move(printer);
    ownsPpd_ = ownsPpd;
    // The print system's item: the device picture is chosen by it, and no panel may change it.
    printerInfo().replace("com.apple.print.PrinterInfo.PMMakeAndModelName",
                          printer_.makeAndModel.empty() ? nullptr : pl::makeString(printer_.makeAndModel),
                          "com.apple.print", true);
}

namespace {
PrintSession* gCurrentPrintSession = nullptr;
}

PrintSession* GetCurrentPrintSession() { return gCurrentPrintSession; }
void SetCurrentPrintSession(PrintSession* session) { gCurrentPrintSession = session; }

} // namespace talmo
