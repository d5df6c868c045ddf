// talmo papers: the printer's paper list over IPP, and the user's named paper library.
#include "cli/command.h"
#include "paperlib/paperlib.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

namespace {

using namespace talmo;

// Splits "-o OUT" from the positional arguments.
bool splitOutput(const std::vector<std::string>& args, std::vector<std::string>& positional, std::string& out,
                 std::string& error)
{
    for (size_t i = 1; i < args.size(); ++i) {
        if (args[i] == "-o") {
            if (i + 1 >= args.size()) {
                error = "-o needs a file name";
                return false;
            }
            out = args[++i];
        } else if (args[i].size() > 1 && args[i][0] == '-') {
            error = "unknown option '" + args[i] + "'";
            return false;
        } else {
            positional.push_back(args[i]);
        }
    }
    return true;
}

int fetch(const std::vector<std::string>& args)
{
    std::vector<std::string> positional;
    std::string out, error;
    if (!splitOutput(args, positional, out, error))
        return cli::usage("papers fetch: " + error);
    if (positional.size() != 1)
        return cli::usage("papers fetch takes one HOST[:PORT]");
    const OSStatus status = RetrievePrinterStockLibrary(positional[0]);
    if (status == kPrinterStockNoConnectionErr)
        return cli::fail("papers fetch: cannot reach the printer at " + positional[0]);
    if (status != noErr)
        return cli::fail("papers fetch: the printer at " + positional[0] + " gave no usable paper list (error " +
                         std::to_string(status) + ")");
    pl::ArrayPtr papers = pl::makeArray();
    for (const Stock& s : *PrinterStockList())
        papers->append(s.asTicket());
    const std::string doc = pl::writePlist(papers);
    if (!out.empty()) {
        int err = 0;
        if (!WriteFileAtomically(out, doc, 0644, &err))
            return cli::fail("cannot write " + out + ": " + std::strerror(err));
        return 0;
    }
    if (std::fwrite(doc.data(), 1, doc.size(), stdout) != doc.size() || std::fflush(stdout) != 0)
        return cli::fail("cannot write the paper list: " + std::string(std::strerror(errno)));
    return 0;
}

const char* statusWord(int32_t status)
{
    switch (status) {
    case kStockEntryInUse:
        return "in-use";
    case kStockEntryUnsupportedValues:
        return "unsupported-values";
    case kStockEntryUnsupportedAttributes:
        return "unsupported-attributes";
    default:
        return "ok";
    }
}

// The uuid of the entry named `name` (ignoring case) or whose uuid is `name`.
std::optional<std::string> findEntry(const StockLibraryList& list, const std::string& name)
{
    if (list.stockList()->getDict(name))
        return name;
    for (const auto& [key, value] : *list.stockList()) {
        const pl::DictPtr d = pl::as<pl::Dictionary>(value);
        if (!d)
            continue;
        const StockLibrary entry(d);
        const Stock::Text& own = entry.stock().customName();
        if (own && EqualIgnoringCase(*own, name))
            return key;
    }
    return std::nullopt;
}

int list(const std::vector<std::string>& args)
{
    if (args.size() != 1)
        return cli::usage("papers list takes no arguments");
    StockLibraryList library;
    std::string text;
    for (const auto& [key, value] : *library.stockList()) {
        const pl::DictPtr d = pl::as<pl::Dictionary>(value);
        if (!d)
            continue;
        const StockLibrary e(d);
        const Stock::Text& name = e.stock().customName();
        text += key + '\t' + statusWord(e.status()) + '\t' + (name ? *name : std::string()) + '\n';
    }
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
}

int add(const std::vector<std::string>& args)
{
    if (args.size() != 2 && args.size() != 3)
        return cli::usage("papers add takes NAME [STOCK.plist]");
    const std::string& name = args[1];
    if (name.empty())
        return cli::usage("papers add: the name is empty");
    Stock stock;
    if (args.size() == 3) {
        pl::ParseResult r;
        const pl::DictPtr d = pl::as<pl::Dictionary>(pl::readPlistFile(args[2], &r));
        if (!d)
            return cli::fail(args[2] + ":" + std::to_string(r.line) + ": " +
                             (r.message.empty() ? std::string("a stock must be a dictionary") : r.message));
        stock = Stock(d);
    }
    stock.setCustomName(name);
    StockLibraryList library;
    if (library.isDuplicate(name))
        return cli::fail("papers add: a paper named \"" + name + "\" exists already");
    StockLibrary entry;
    entry.setStock(stock);
    entry.validateStockEntry();
    const std::string uuid = library.add(&entry);
    if (!library.write())
        return cli::fail("papers add: cannot write the library");
    std::printf("%s\n", uuid.c_str());
    return 0;
}

int remove(const std::vector<std::string>& args)
{
    if (args.size() != 2)
        return cli::usage("papers remove takes NAME or UUID");
    StockLibraryList library;
    const auto uuid = findEntry(library, args[1]);
    if (!uuid)
        return cli::fail("papers remove: no paper named \"" + args[1] + "\"");
    library.remove(*uuid);
    StockLibraryOrderList order;
    order.remove(*uuid);
    return library.write() ? 0 : cli::fail("papers remove: cannot write the library");
}

int rename(const std::vector<std::string>& args)
{
    if (args.size() != 3)
        return cli::usage("papers rename takes OLD NEW");
    if (args[2].empty())
        return cli::usage("papers rename: the new name is empty");
    StockLibraryList library;
    const auto uuid = findEntry(library, args[1]);
    if (!uuid)
        return cli::fail("papers rename: no paper named \"" + args[1] + "\"");
    if (const auto other = findEntry(library, args[2]); other && *other != *uuid)
        return cli::fail("papers rename: a paper named \"" + args[2] + "\" exists already");
    StockLibrary entry(library.stockList()->getDict(*uuid));
    entry.stock().setCustomName(args[2]);
    library.update(*uuid, &entry);
    return library.write() ? 0 : cli::fail("papers rename: cannot write the library");
}

talmo::cli::Registration regFetch("papers fetch",
                                  "HOST[:PORT] [-o OUT.plist]  the printer's paper list as stock dictionaries", fetch);
talmo::cli::Registration regList("papers list", "  the named paper library: UUID, status and name per line", list);
talmo::cli::Registration regAdd("papers add", "NAME [STOCK.plist]  add a named paper (refuses a name in use)", add);
talmo::cli::Registration regRemove("papers remove", "NAME|UUID  remove a named paper", remove);
talmo::cli::Registration regRename("papers rename", "OLD NEW  rename a named paper", rename);

} // namespace
