// Special pages of a job: covers, inserts (sheets put in after a page) and exception page
// ranges (pages printed with other settings), the two ordered lists that hold inserts and
// exceptions, their dictionary forms and their place in the print settings ticket.
#pragma once

#include "settings/settings.h"
#include "ticket/full-color.h"
#include "ticket/image-shift.h"
#include "ticket/stock.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace talmo {

// Cover sides imaged ("CoverBlankorPreprinted" ... "CoverPrintSide1And2").
inline constexpr int32_t kCoverBlankOrPreprinted = 1;
inline constexpr int32_t kCoverPrintSide1 = 2;
inline constexpr int32_t kCoverPrintSide2 = 3;
inline constexpr int32_t kCoverPrintSide1And2 = 4;

// A page with its own stock. Abstract: every special page is a cover, insert or exception.
class SpecialPage {
public:
    SpecialPage() = default;
    // "StartPage" (else 0) and "Stock" (else a default stock); a null dictionary reads as empty.
    explicit SpecialPage(const pl::DictPtr& dict);
    SpecialPage(const SpecialPage&) = default;
    SpecialPage& operator=(const SpecialPage&) = default;
    virtual ~SpecialPage() = default;

    // A new dictionary owned by the caller; "StartPage" and "Stock" come first in every kind.
    virtual pl::DictPtr asTicket() const;
    virtual std::unique_ptr<SpecialPage> clone() const = 0;

    int32_t startPage() const { return startPage_; }
    void setStartPage(int32_t page) { startPage_ = page; }
    Stock& stock() { return stock_; }
    const Stock& stock() const { return stock_; }

private:
    int32_t startPage_ = 0;
    Stock stock_;
};

class Cover final : public SpecialPage {
public:
    Cover() = default;
    explicit Cover(const pl::DictPtr& dict);

    pl::DictPtr asTicket() const override;
    std::unique_ptr<SpecialPage> clone() const override;
    // Equal sides imaged and equal stocks; the start page is not compared.
    bool operator==(const Cover& other) const;

    int32_t sidesImaged() const { return sidesImaged_; }
    void setSidesImaged(int32_t sides) { sidesImaged_ = sides; }

private:
    int32_t sidesImaged_ = kCoverBlankOrPreprinted;
};

// Sheets put in after the start page; start page 0 means before page 1.
class Insert final : public SpecialPage {
public:
    Insert() = default;
    explicit Insert(const pl::DictPtr& dict);

    pl::DictPtr asTicket() const override;
    std::unique_ptr<SpecialPage> clone() const override;

    int32_t quantity() const { return quantity_; }
    void setQuantity(int32_t sheets) { quantity_ = sheets; }

private:
    int32_t quantity_ = 1;
};

// Pages startPage..endPage printed with their own plex, colour, screen and image shift.
class ExceptionPage final : public SpecialPage {
public:
    ExceptionPage();
    explicit ExceptionPage(const pl::DictPtr& dict);

    pl::DictPtr asTicket() const override;
    std::unique_ptr<SpecialPage> clone() const override;

    int32_t endPage() const { return endPage_; }
    void setEndPage(int32_t page) { endPage_ = page; }
    // Simplex 1, Duplex 2, DuplexShort 3; stored under "SidesImaged" in the dictionary.
    int32_t plex() const { return plex_; }
    void setPlex(int32_t plex) { plex_ = plex; }
    FullColorOptions& colorOptions() { return colorOptions_; }
    const FullColorOptions& colorOptions() const { return colorOptions_; }
    int32_t halftoneScreen() const { return halftoneScreen_; }
    void setHalftoneScreen(int32_t screen) { halftoneScreen_ = screen; }
    int32_t antialiasing() const { return antialiasing_; }
    void setAntialiasing(int32_t value) { antialiasing_ = value; }
    int32_t outputColor() const { return outputColor_; }
    void setOutputColor(int32_t value) { outputColor_ = value; }
    _IS_Options* imageShift() { return &imageShift_; }
    const _IS_Options* imageShift() const { return &imageShift_; }
    int32_t lightenDarken() const { return lightenDarken_; }
    void setLightenDarken(int32_t value) { lightenDarken_ = value; }

private:
    int32_t endPage_ = 0;
    int32_t plex_ = kNotSet;
    _IS_Options imageShift_;
    FullColorOptions colorOptions_;
    int32_t antialiasing_ = kNotSet;
    int32_t outputColor_ = kNotSet;
    int32_t halftoneScreen_ = kNotSet;
    int32_t lightenDarken_ = kNotSet;
};

// An ordered list that owns its entries. add() never takes what it is given: it inserts
// clones, and the caller keeps (and deletes) its own records.
class SpecialPageList {
public:
    SpecialPageList() = default;
    SpecialPageList(const SpecialPageList&) = delete;
    SpecialPageList& operator=(const SpecialPageList&) = delete;
    virtual ~SpecialPageList() = default;

    long count() const { return static_cast<long>(pages_.size()); }
    bool empty() const { return pages_.empty(); }
    // Null when i < 0 or i >= count(). Change page numbers only through update(), which
    // keeps the list's order.
    virtual SpecialPage* pageAtIndex(long i) const;
    // Position of that very object, -1 when it is not in the list.
    virtual long indexOfPage(const SpecialPage* page) const;
    // Inserts clones of `pages` by the list's ordering rules. 0, or paramErr (nothing added)
    // when an entry is null, of another kind, or (exceptions) ends before it starts.
    virtual OSStatus add(std::span<const SpecialPage* const> pages) = 0;
    virtual std::unique_ptr<SpecialPageList> clone() const = 0;

    template <class T> OSStatus add(const std::vector<std::unique_ptr<T>>& pages) { return add(pointers(pages)); }

    // Removes and deletes the entry; nothing happens when it is not in the list.
    void remove(const SpecialPage* page);
    void clear() { pages_.clear(); }
    // Replaces `page` by `pages`: 0 and nothing done when page is not in the list; otherwise
    // add's result, with page deleted on success and back at its old position on failure.
    OSStatus update(const SpecialPage* page, std::span<const SpecialPage* const> pages);
    template <class T> OSStatus update(const SpecialPage* page, const std::vector<std::unique_ptr<T>>& pages)
    {
        return update(page, pointers(pages));
    }

    // The entries' dictionaries in list order; null (not an empty array) for an empty list.
    pl::ArrayPtr asTicket() const;

protected:
    SpecialPageList(SpecialPageList&&) noexcept = default;
    SpecialPageList& operator=(SpecialPageList&&) noexcept = default;

    template <class T> static std::vector<const SpecialPage*> pointers(const std::vector<std::unique_ptr<T>>& pages)
    {
        std::vector<const SpecialPage*> out;
        out.reserve(pages.size());
        for (const auto& p : pages)
            out.push_back(p.get());
        return out;
    }

    std::vector<std::unique_ptr<SpecialPage>> pages_;
};

// Inserts sorted by start page; inserts after the same page keep the order they were added
// in, and only they can be moved among themselves.
class InsertList final : public SpecialPageList {
public:
    InsertList() = default;
    InsertList(const InsertList& other);
    InsertList& operator=(const InsertList& other);
    InsertList(InsertList&&) noexcept = default;
    InsertList& operator=(InsertList&&) noexcept = default;

    Insert* pageAtIndex(long i) const override;
    using SpecialPageList::add;
    OSStatus add(std::span<const SpecialPage* const> pages) override;
    std::unique_ptr<SpecialPageList> clone() const override;

    bool canPromote(const SpecialPage* page) const;
    void promote(const SpecialPage* page);
    bool canDemote(const SpecialPage* page) const;
    void demote(const SpecialPage* page);
};

// Exception ranges sorted by start page, never overlapping: a new range wins over what it
// overlaps, and what it overlaps is trimmed, split or removed.
class ExceptionPageList final : public SpecialPageList {
public:
    ExceptionPageList() = default;
    ExceptionPageList(const ExceptionPageList& other);
    ExceptionPageList& operator=(const ExceptionPageList& other);
    ExceptionPageList(ExceptionPageList&&) noexcept = default;
    ExceptionPageList& operator=(ExceptionPageList&&) noexcept = default;

    ExceptionPage* pageAtIndex(long i) const override;
    using SpecialPageList::add;
    OSStatus add(std::span<const SpecialPage* const> pages) override;
    std::unique_ptr<SpecialPageList> clone() const override;
};

// The special pages of one Special Pages panel: the covers and lists it edits, the job's
// stock the dialogs refer to, and the one-level undo snapshot.
struct SpecialPagesState {
    std::unique_ptr<Cover> frontCover;
    std::unique_ptr<Cover> backCover;
    InsertList inserts;
    ExceptionPageList exceptions;
    // Rebuilt from "com.talmo.print.JobLevelStock" on every read from the ticket.
    std::unique_ptr<Stock> jobStock;

    struct Snapshot {
        std::unique_ptr<Cover> frontCover;
        std::unique_ptr<Cover> backCover;
        std::unique_ptr<InsertList> inserts;
        std::unique_ptr<ExceptionPageList> exceptions;
    } undo;
};

// Replaces the snapshot by clones of the covers (those present) and of both lists.
// kPMNoContext when state is null.
OSStatus SaveUndoState(SpecialPagesState* state);
// Puts the snapshot in place of the covers and lists and empties it; nothing happens when
// there is no snapshot. kPMNoContext when state is null.
OSStatus PerformUndo(SpecialPagesState* state);
// The Undo command is enabled while any part of a snapshot exists.
bool CanUndo(const SpecialPagesState& state);

// Ticket storage: the items kSpecialPagesFrontCoverKey ... kSpecialPagesExceptionListKey
// (settings/ticket-keys.h), written with the creator kTalmoSpecialPagesCreator. Both return
// paramErr for a null state or ticket.
//
// Writing: each list under its key, an empty list removing it; the front cover, or its key
// removed; with "com.talmo.print.BookletLayout" true and equal covers the back cover's key
// is removed, otherwise the back cover is written or removed. When one of the four items is
// locked, kPMTicketItemLocked and nothing is written.
OSStatus WriteSpecialPagesToTicket(const SpecialPagesState* state, Ticket* ticket);
// Reading: both lists rebuilt through add (elements that are not dictionaries are skipped; an
// exception range that ends before it starts, or has no "EndPage", is kept as its first page
// with a "DEBUG: " line on stderr), the covers and the job stock rebuilt; with booklet layout
// on the back cover is a clone of the front.
OSStatus ReadSpecialPagesFromTicket(SpecialPagesState* state, const Ticket* ticket);

} // namespace talmo
