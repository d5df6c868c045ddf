// What the Special Pages panel shows and allows, free of widgets: the rows of its list, the
// details of each record, the panel's summary, the enabling of its commands, and the delete,
// move and sync operations on the panel's special pages.
#pragma once

#include "ticket/ticket.h"

#include <span>
#include <string>
#include <utility>
#include <vector>

namespace talmo::specialpages {

// The list shows the front cover, the back cover, then the inserts and the exceptions in
// their lists' order.
enum class RowKind { FrontCover, BackCover, Insert, Exception };
struct Row {
    RowKind kind = RowKind::Insert;
    SpecialPage* page = nullptr; // null for a row outside the list
};
long SpecialPageRowCount(const SpecialPagesState& state);
Row SpecialPageRowAt(const SpecialPagesState& state, long row);
// The row showing `page`, -1 when it is not shown.
long SpecialPageRowOf(const SpecialPagesState& state, const SpecialPage* page);

// The list's columns: the kind ("Cover"), the pages ("Front", "Before 1", "3", "10-12") and
// the details.
std::string SpecialPageKindText(const Row& row, const StockTextSource& texts);
std::string SpecialPagePagesText(const Row& row, const StockTextSource& texts);

// The record's own part of the details.
std::string CreateInsertAttributesDescription(const Insert& insert, const StockTextSource& texts);
// The exception's page-level settings: image shift, output colour, screen, anti-aliasing, TRC
// and colour options, each only when set, joined with "; ".
std::string CreateExceptionAttributesDescription(const ExceptionPage& page, const StockTextSource& texts);
// "Image shift:" and the shift values; empty while the mode is unset.
std::string CreateImageShiftAttributesDescription(const _IS_Options& options, const StockTextSource& texts);
// The details column: paper name, the record's own part, the stock's attributes and (for an
// exception) its settings, joined with "; ".
std::string CopySpecialPageSummary(const SpecialPage& page, const StockTextSource& texts);

// The panel's summary: one (title, text) line per kind present, the text naming each record's
// pages with its details; a long list names the first few and counts the rest. One "none"
// line when there are no special pages.
std::vector<std::pair<std::string, std::string>> UpdateSpecialPagesSummary(const SpecialPagesState& state,
                                                                           const StockTextSource& texts);

struct CommandState {
    bool edit = false;      // exactly one row
    bool remove = false;    // at least one row
    bool removeAll = false; // any special page
    bool moveUp = false;    // exactly one insert that can be promoted
    bool moveDown = false;  // exactly one insert that can be demoted
    bool undo = false;      // a snapshot exists
};
CommandState UpdateSpecialPagesCommandButtons(const SpecialPagesState& state, std::span<const long> selectedRows);

// Removes the records shown in `rows` (any order, duplicates and rows outside the list
// ignored). The caller has saved the undo state.
void DeleteSpecialPageRows(SpecialPagesState* state, std::span<const long> rows);
// Removes every cover, insert and exception.
void DeleteAllSpecialPageRecords(SpecialPagesState* state);
// Saves the undo state and moves the insert of `row` up (promote) or down (demote); false
// (nothing saved) when the row is not an insert that can move that way.
bool MoveSpecialPageRow(SpecialPagesState* state, long row, bool up);

// The panel's sync: direction false writes the covers and lists into the ticket, true rebuilds
// them (and the job's stock) from it. kPMNoContext without a state; a null ticket is nothing to
// do.
OSStatus SyncSpecialPages(SpecialPagesState* state, Ticket* ticket, bool fromTicket);

} // namespace talmo::specialpages
