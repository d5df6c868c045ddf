#include "panels/specialpages/specialpages-summary.h"

#include <algorithm>
#include <unordered_set>

namespace talmo::specialpages {

namespace {

// How many records the panel summary names per kind before it counts the rest.
constexpr size_t kSummaryRecordsPerKind = 5;
// Deleting more entries than this from one list rebuilds it instead of removing one by one,
// so deleting a whole selection of 99,995 inserts stays linear.
constexpr size_t kRemoveOneByOneLimit = 32;

std::string L(const StockTextSource& texts, std::string_view key)
{
    return texts.localized ? texts.localized(key) : std::string(key);
}

// A map row's localized key; nothing for an unset value or a value the map does not hold.
std::string mapped(const StockTextSource& texts, const SettingMap* map, int32_t value)
{
    if (value == kNotSet)
        return {};
    for (const SettingMap* row = map; row->key; ++row)
        if (row->ticketValue == value)
            return L(texts, row->key);
    return {};
}

std::string join(const std::vector<std::string>& parts, std::string_view separator)
{
    std::string out;
    for (const std::string& part : parts) {
        if (part.empty())
            continue;
        if (!out.empty())
            out += separator;
        out += part;
    }
    return out;
}

std::string labelled(const StockTextSource& texts, const char* labelKey, const std::string& value)
{
    return value.empty() ? std::string() : L(texts, labelKey) + " " + value;
}

std::string text(const Stock::Text& t) { return t ? *t : std::string(); }

std::string stockType(const Stock& stock, const StockTextSource& texts)
{
    const int32_t type = stock.type();
    auto withCount = [&](const std::string& name) { return name + " (" + std::to_string(stock.modulus()) + ")"; };
    if (type == kNotSet)
        return {};
    if (type == kStockTypeOrdered)
        return withCount(text(stock.customType()));
    if (type == kStockTypePrecutTab)
        return withCount(L(texts, "StockTypePrecutTab"));
    if ((type == kStockTypeTabStock || type == kStockTypeTabStockAlt) && stock.modulus() > 0) {
        const auto name = texts.mediaTypeText ? texts.mediaTypeText(type) : std::nullopt;
        return name ? withCount(*name) : std::string();
    }
    if (type == kStockTypeCustom)
        return text(stock.customType());
    return mapped(texts, _CompleteStockTypeMap, type);
}

std::string stockWeight(const Stock& stock, const StockTextSource& texts)
{
    const int32_t weight = stock.weight();
    if (weight == kNotSet)
        return {};
    // The menu's "Custom..." row is not a weight.
    if (weight != kStockWeightCustomRow)
        if (std::string key = mapped(texts, _WeightMap, weight); !key.empty())
            return key;
    return L(texts, "Weight Label") + " " + std::to_string(weight) + " gsm";
}

std::string stockCoating(const Stock& stock, const StockTextSource& texts)
{
    if (stock.sidesCoated() == kNotSet)
        return {};
    if (stock.sidesCoated() == 1)
        return L(texts, "Uncoated");
    return L(texts, "Coating Label") + " " + mapped(texts, _CoatingTypeMap, stock.coatingType()) + " - " +
           mapped(texts, _SidesCoatedMap, stock.sidesCoated());
}

std::string stockAttributes(const Stock& stock, const StockTextSource& texts)
{
    if (stock.source() == kStockSourceInserter) {
        const char* key = "PostPrintInserterKey";
        return texts.installedOptionText ? texts.installedOptionText(key) : L(texts, key);
    }
    if (stock.source() != kNotSet)
        return {};
    std::vector<std::string> parts;
    if (stock.size() != kNotSet)
        if (const char* key = LocalizedKeyForPaperSizeTicketValue(CompleteStockSizeMap, stock.size()))
            parts.push_back(L(texts, key));
    parts.push_back(stock.color() == kStockColorCustom ? text(stock.customColor())
                                                       : mapped(texts, _CompleteStockColorMap, stock.color()));
    parts.push_back(stockType(stock, texts));
    parts.push_back(labelled(texts, "Hole Punched Label", mapped(texts, _StockPunchedMap, stock.punched())));
    parts.push_back(stockWeight(stock, texts));
    parts.push_back(stockCoating(stock, texts));
    parts.push_back(mapped(texts, _GrainMap, stock.grain()));
    parts.push_back(mapped(texts, _FinishMap, stock.finish()));
    parts.push_back(labelled(texts, "Description Label", text(stock.description())));
    return join(parts, ", ");
}

} // namespace

long SpecialPageRowCount(const SpecialPagesState& state)
{
    return (state.frontCover ? 1 : 0) + (state.backCover ? 1 : 0) + state.inserts.count() + state.exceptions.count();
}

Row SpecialPageRowAt(const SpecialPagesState& state, long row)
{
    if (row < 0)
        return {};
    if (state.frontCover && row-- == 0)
        return {RowKind::FrontCover, state.frontCover.get()};
    if (state.backCover && row-- == 0)
        return {RowKind::BackCover, state.backCover.get()};
    if (row < state.inserts.count())
        return {RowKind::Insert, state.inserts.pageAtIndex(row)};
    row -= state.inserts.count();
    if (row < state.exceptions.count())
        return {RowKind::Exception, state.exceptions.pageAtIndex(row)};
    return {};
}

long SpecialPageRowOf(const SpecialPagesState& state, const SpecialPage* page)
{
    if (!page)
        return -1;
    const long covers = (state.frontCover ? 1 : 0) + (state.backCover ? 1 : 0);
    if (page == state.frontCover.get())
        return 0;
    if (page == state.backCover.get())
        return covers - 1;
    if (long i = state.inserts.indexOfPage(page); i >= 0)
        return covers + i;
    if (long i = state.exceptions.indexOfPage(page); i >= 0)
        return covers + state.inserts.count() + i;
    return -1;
}

std::string SpecialPageKindText(const Row& row, const StockTextSource& texts)
{
    if (!row.page)
        return {};
    switch (row.kind) {
    case RowKind::FrontCover:
    case RowKind::BackCover:
        return L(texts, "SpecialPageSummaryCover");
    case RowKind::Insert:
        return L(texts, "SpecialPageSummaryInsert");
    case RowKind::Exception:
        return L(texts, "SpecialPageSummaryException");
    }
    return {};
}

std::string SpecialPagePagesText(const Row& row, const StockTextSource& texts)
{
    if (!row.page)
        return {};
    switch (row.kind) {
    case RowKind::FrontCover:
        return L(texts, "SpecialPageSummaryFront");
    case RowKind::BackCover:
        return L(texts, "SpecialPageSummaryBack");
    case RowKind::Insert:
        return row.page->startPage() == 0 ? L(texts, "SpecialPageSummaryBefore1")
                                          : std::to_string(row.page->startPage());
    case RowKind::Exception: {
        const auto* e = static_cast<const ExceptionPage*>(row.page);
        if (e->startPage() == e->endPage())
            return std::to_string(e->startPage());
        return std::to_string(e->startPage()) + "-" + std::to_string(e->endPage());
    }
    }
    return {};
}

std::string CreateInsertAttributesDescription(const Insert& insert, const StockTextSource& texts)
{
    return L(texts, "InsertSummaryQuantity") + " [" + std::to_string(insert.quantity()) + "]";
}

std::string CreateImageShiftAttributesDescription(const _IS_Options& options, const StockTextSource& texts)
{
    if (options.option == kNotSet)
        return {};
    std::string values = GenerateImageShiftSummary(options, kJobContextExceptions, texts.localized);
    std::replace(values.begin(), values.end(), '\n', ' ');
    return values.empty() ? std::string() : L(texts, "ImageShift") + ":" + values;
}

std::string CreateExceptionAttributesDescription(const ExceptionPage& page, const StockTextSource& texts)
{
    FullColorOptions::Name trc;
    page.colorOptions().trc(&trc);
    const std::vector<std::string> parts = {
        CreateImageShiftAttributesDescription(*page.imageShift(), texts),
        mapped(texts, _OutputColorMap, page.outputColor()),
        labelled(texts, "Halftone Screen:", mapped(texts, _HalftoneScreenMap, page.halftoneScreen())),
        labelled(texts, "Anti-aliasing:", mapped(texts, _AntialiasingMap, page.antialiasing())),
        labelled(texts, "TRC:", trc.value_or(std::string())),
        GenerateFullColorSummary(page.colorOptions(), kJobContextExceptions, ", ", texts.localized),
    };
    return join(parts, "; ");
}

std::string CopySpecialPageSummary(const SpecialPage& page, const StockTextSource& texts)
{
    std::vector<std::string> parts;
    parts.push_back(labelled(texts, "Paper Name Label", text(page.stock().customName())));
    if (const auto* cover = dynamic_cast<const Cover*>(&page))
        parts.push_back(mapped(texts, _CoverSidesImagedMap, cover->sidesImaged()));
    else if (const auto* insert = dynamic_cast<const Insert*>(&page))
        parts.push_back(CreateInsertAttributesDescription(*insert, texts));
    else if (const auto* exception = dynamic_cast<const ExceptionPage*>(&page))
        parts.push_back(mapped(texts, _PlexMap, exception->plex()));
    parts.push_back(stockAttributes(page.stock(), texts));
    if (const auto* exception = dynamic_cast<const ExceptionPage*>(&page))
        parts.push_back(CreateExceptionAttributesDescription(*exception, texts));
    return join(parts, "; ");
}

std::vector<std::pair<std::string, std::string>> UpdateSpecialPagesSummary(const SpecialPagesState& state,
                                                                           const StockTextSource& texts)
{
    std::vector<std::pair<std::string, std::string>> lines;
    auto entry = [&](const Row& row) {
        std::string details = CopySpecialPageSummary(*row.page, texts);
        std::string pages = SpecialPagePagesText(row, texts);
        return details.empty() ? pages : pages + " (" + details + ")";
    };
    auto line = [&](const char* titleKey, RowKind kind, long first, long count) {
        if (count <= 0)
            return;
        std::vector<std::string> entries;
        const long shown = std::min<long>(count, kSummaryRecordsPerKind);
        for (long i = 0; i < shown; ++i)
            entries.push_back(entry({kind, SpecialPageRowAt(state, first + i).page}));
        if (count > shown) {
            std::string more = L(texts, "SpecialPagesSummaryMore");
            if (size_t at = more.find("%d"); at != std::string::npos)
                more.replace(at, 2, std::to_string(count - shown));
            entries.push_back(more);
        }
        lines.emplace_back(L(texts, titleKey), join(entries, ", "));
    };
    std::vector<std::string> covers;
    if (state.frontCover)
        covers.push_back(entry({RowKind::FrontCover, state.frontCover.get()}));
    if (state.backCover)
        covers.push_back(entry({RowKind::BackCover, state.backCover.get()}));
    if (!covers.empty())
        lines.emplace_back(L(texts, "SpecialPageSummaryCover"), join(covers, ", "));
    const long covered = static_cast<long>(covers.size());
    line("SpecialPageSummaryInsert", RowKind::Insert, covered, state.inserts.count());
    line("SpecialPageSummaryException", RowKind::Exception, covered + state.inserts.count(), state.exceptions.count());
    if (lines.empty())
        lines.emplace_back(L(texts, "SpecialPagesPanel"), L(texts, "None"));
    return lines;
}

CommandState UpdateSpecialPagesCommandButtons(const SpecialPagesState& state, std::span<const long> selectedRows)
{
    CommandState commands;
    const long count = SpecialPageRowCount(state);
    long valid = 0;
    long only = -1;
    for (long row : selectedRows)
        if (row >= 0 && row < count) {
            ++valid;
            only = row;
        }
    commands.edit = valid == 1;
    commands.remove = valid >= 1;
    commands.removeAll = count > 0;
    commands.undo = CanUndo(state);
    if (valid == 1) {
        const Row row = SpecialPageRowAt(state, only);
        if (row.kind == RowKind::Insert) {
            commands.moveUp = state.inserts.canPromote(row.page);
            commands.moveDown = state.inserts.canDemote(row.page);
        }
    }
    return commands;
}

namespace {

// Removes the chosen entries of one list: one by one when they are few, else by rebuilding the
// list from the entries that stay (clones, in order, through the list's own add).
template <class List> void removeFrom(List& list, const std::unordered_set<const SpecialPage*>& chosen, size_t inList)
{
    if (inList == 0)
        return;
    if (inList <= kRemoveOneByOneLimit) {
        for (long i = list.count() - 1; i >= 0; --i)
            if (chosen.count(list.pageAtIndex(i)))
                list.remove(list.pageAtIndex(i));
        return;
    }
    std::vector<const SpecialPage*> kept;
    kept.reserve(static_cast<size_t>(list.count()));
    for (long i = 0; i < list.count(); ++i)
        if (!chosen.count(list.pageAtIndex(i)))
            kept.push_back(list.pageAtIndex(i));
    List rebuilt;
    rebuilt.add(std::span<const SpecialPage* const>(kept));
    list = std::move(rebuilt);
}

} // namespace

void DeleteSpecialPageRows(SpecialPagesState* state, std::span<const long> rows)
{
    if (!state)
        return;
    std::unordered_set<const SpecialPage*> chosen;
    size_t inserts = 0, exceptions = 0;
    bool front = false, back = false;
    for (long r : rows) {
        const Row row = SpecialPageRowAt(*state, r);
        if (!row.page || !chosen.insert(row.page).second)
            continue;
        front |= row.kind == RowKind::FrontCover;
        back |= row.kind == RowKind::BackCover;
        inserts += row.kind == RowKind::Insert;
        exceptions += row.kind == RowKind::Exception;
    }
    if (front)
        state->frontCover.reset();
    if (back)
        state->backCover.reset();
    removeFrom(state->inserts, chosen, inserts);
    removeFrom(state->exceptions, chosen, exceptions);
}

void DeleteAllSpecialPageRecords(SpecialPagesState* state)
{
    if (!state)
        return;
    state->frontCover.reset();
    state->backCover.reset();
    state->inserts.clear();
    state->exceptions.clear();
}

bool MoveSpecialPageRow(SpecialPagesState* state, long row, bool up)
{
    if (!state)
        return false;
    const Row r = SpecialPageRowAt(*state, row);
    if (r.kind != RowKind::Insert || !r.page)
        return false;
    if (!(up ? state->inserts.canPromote(r.page) : state->inserts.canDemote(r.page)))
        return false;
    SaveUndoState(state);
    // The snapshot holds clones, so the entry is still the one in the list.
    if (up)
        state->inserts.promote(r.page);
    else
        state->inserts.demote(r.page);
    return true;
}

OSStatus SyncSpecialPages(SpecialPagesState* state, Ticket* ticket, bool fromTicket)
{
    if (!state)
        return kPMNoContext;
    if (!ticket)
        return noErr;
    return fromTicket ? ReadSpecialPagesFromTicket(state, ticket) : WriteSpecialPagesToTicket(state, ticket);
}

} // namespace talmo::specialpages
