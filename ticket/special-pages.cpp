#include "ticket/ticket.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <map>

namespace talmo {

namespace {

constexpr const char* kStartPageField = "StartPage";
constexpr const char* kStockField = "Stock";
constexpr const char* kSidesImagedField = "SidesImaged";
constexpr const char* kQuantityField = "Quantity";
constexpr const char* kEndPageField = "EndPage";
constexpr const char* kFullColorPageField = "FullColorOptionsPage";
constexpr const char* kAntialiasingField = "Antialiasing";
constexpr const char* kOutputColorField = "OutputColor";
constexpr const char* kHalftoneScreenField = "HalftoneScreen";
constexpr const char* kLightenDarkenField = "LightenDarken";

// A number the 32-bit field can hold; anything else (absent, another type, out of range)
// leaves the field as it was.
void readInt32(const pl::DictPtr& d, const char* key, int32_t& field)
{
    if (!d)
        return;
    const auto v = d->getInt(key);
    if (v && *v >= INT32_MIN && *v <= INT32_MAX)
        field = static_cast<int32_t>(*v);
}

void writeIfSet(const pl::DictPtr& d, const char* key, int32_t value)
{
    if (value != kNotSet)
        d->setInt(key, value);
}

} // namespace

// --- Records -------------------------------------------------------------------------------

SpecialPage::SpecialPage(const pl::DictPtr& dict) : stock_(dict ? dict->getDict(kStockField) : nullptr)
{
    readInt32(dict, kStartPageField, startPage_);
}

pl::DictPtr SpecialPage::asTicket() const
{
    auto d = pl::makeDict();
    d->setInt(kStartPageField, startPage_);
    pl::DictPtr stock = stock_.asTicket();
    d->set(kStockField, stock ? stock : pl::makeDict());
    return d;
}

Cover::Cover(const pl::DictPtr& dict) : SpecialPage(dict) { readInt32(dict, kSidesImagedField, sidesImaged_); }

pl::DictPtr Cover::asTicket() const
{
    pl::DictPtr d = SpecialPage::asTicket();
    d->setInt(kSidesImagedField, sidesImaged_);
    return d;
}

std::unique_ptr<SpecialPage> Cover::clone() const { return std::make_unique<Cover>(*this); }

bool Cover::operator==(const Cover& other) const
{
    return sidesImaged_ == other.sidesImaged_ && stock() == other.stock();
}

Insert::Insert(const pl::DictPtr& dict) : SpecialPage(dict) { readInt32(dict, kQuantityField, quantity_); }

pl::DictPtr Insert::asTicket() const
{
    pl::DictPtr d = SpecialPage::asTicket();
    d->setInt(kQuantityField, quantity_);
    return d;
}

std::unique_ptr<SpecialPage> Insert::clone() const { return std::make_unique<Insert>(*this); }

ExceptionPage::ExceptionPage() { ImageShiftInitialize(&imageShift_); }

ExceptionPage::ExceptionPage(const pl::DictPtr& dict) : SpecialPage(dict)
{
    ImageShiftInitialize(&imageShift_);
    if (!dict)
        return;
    if (pl::DictPtr shift = dict->getDict(kImageShiftOptionsPageKey))
        ImageShiftSetOptionsFromTicket(&imageShift_, shift);
    readInt32(dict, kEndPageField, endPage_);
    if (pl::DictPtr color = dict->getDict(kFullColorPageField))
        colorOptions_.fromTicket(color);
    readInt32(dict, kHalftoneScreenField, halftoneScreen_);
    readInt32(dict, kAntialiasingField, antialiasing_);
    readInt32(dict, kOutputColorField, outputColor_);
    readInt32(dict, kSidesImagedField, plex_);
    readInt32(dict, kLightenDarkenField, lightenDarken_);
}

pl::DictPtr ExceptionPage::asTicket() const
{
    pl::DictPtr d = SpecialPage::asTicket();
    d->setInt(kEndPageField, endPage_);
    if (pl::DictPtr shift = ImageShiftCreateTicketFromOptions(&imageShift_, kJobContextExceptions))
        d->set(kImageShiftOptionsPageKey, shift);
    // The plex shares the cover's key text on purpose; stored tickets depend on it.
    writeIfSet(d, kSidesImagedField, plex_);
    if (pl::DictPtr color = colorOptions_.asTicket())
        d->set(kFullColorPageField, color);
    writeIfSet(d, kAntialiasingField, antialiasing_);
    writeIfSet(d, kOutputColorField, outputColor_);
    writeIfSet(d, kHalftoneScreenField, halftoneScreen_);
    writeIfSet(d, kLightenDarkenField, lightenDarken_);
    return d;
}

std::unique_ptr<SpecialPage> ExceptionPage::clone() const { return std::make_unique<ExceptionPage>(*this); }

// --- SpecialPageList -----------------------------------------------------------------------

SpecialPage* SpecialPageList::pageAtIndex(long i) const
{
    if (i < 0 || i >= count())
        return nullptr;
    return pages_[static_cast<size_t>(i)].get();
}

long SpecialPageList::indexOfPage(const SpecialPage* page) const
{
    if (!page)
        return -1;
    for (size_t i = 0; i < pages_.size(); ++i)
        if (pages_[i].get() == page)
            return static_cast<long>(i);
    return -1;
}

void SpecialPageList::remove(const SpecialPage* page)
{
    const long i = indexOfPage(page);
    if (i >= 0)
        pages_.erase(pages_.begin() + i);
}

OSStatus SpecialPageList::update(const SpecialPage* page, std::span<const SpecialPage* const> pages)
{
    const long i = indexOfPage(page);
    if (i < 0)
        return noErr;
    std::unique_ptr<SpecialPage> edited = std::move(pages_[static_cast<size_t>(i)]);
    pages_.erase(pages_.begin() + i);
    const OSStatus status = add(pages);
    // add checks before it changes anything, so the old position is still the right one.
    if (status != noErr)
        pages_.insert(pages_.begin() + i, std::move(edited));
    return status;
}

pl::ArrayPtr SpecialPageList::asTicket() const
{
    if (pages_.empty())
        return nullptr;
    auto array = pl::makeArray();
    array->reserve(pages_.size());
    for (const auto& p : pages_)
        if (pl::DictPtr d = p->asTicket())
            array->append(d);
    return array;
}

// --- InsertList ----------------------------------------------------------------------------

InsertList::InsertList(const InsertList& other) : SpecialPageList()
{
    std::vector<const SpecialPage*> entries;
    entries.reserve(other.pages_.size());
    for (const auto& p : other.pages_)
        entries.push_back(p.get());
    add(entries);
}

InsertList& InsertList::operator=(const InsertList& other)
{
    if (this != &other) {
        InsertList copy(other);
        *this = std::move(copy);
    }
    return *this;
}

Insert* InsertList::pageAtIndex(long i) const { return static_cast<Insert*>(SpecialPageList::pageAtIndex(i)); }

std::unique_ptr<SpecialPageList> InsertList::clone() const { return std::make_unique<InsertList>(*this); }

OSStatus InsertList::add(std::span<const SpecialPage* const> pages)
{
    for (const SpecialPage* p : pages)
        if (!dynamic_cast<const Insert*>(p))
            return paramErr;
    if (pages.empty())
        return noErr;

    std::vector<std::unique_ptr<SpecialPage>> batch;
    batch.reserve(pages.size());
    for (const SpecialPage* p : pages)
        batch.push_back(p->clone());

    const auto byStart = [](const std::unique_ptr<SpecialPage>& a, const std::unique_ptr<SpecialPage>& b) {
        return a->startPage() < b->startPage();
    };
    if (!std::is_sorted(pages_.begin(), pages_.end(), byStart)) {
        // Only reachable when a start page was changed in place: insert one by one, exactly
        // as the rule reads, before the first entry that starts later.
        for (auto& n : batch) {
            const int32_t s = n->startPage();
            auto at = std::find_if(pages_.begin(), pages_.end(), [s](const auto& e) { return e->startPage() > s; });
            pages_.insert(at, std::move(n));
        }
        return noErr;
    }
    // Inserting each new entry before the first that starts later is a stable sort of the
    // batch merged after the equal entries already present: O((n + k) log k) instead of a
    // scan per insert, which matters for "5-" (99,995 inserts).
    std::stable_sort(batch.begin(), batch.end(), byStart);
    if (pages_.empty() || byStart(pages_.back(), batch.front()) ||
        pages_.back()->startPage() == batch.front()->startPage()) {
        pages_.reserve(pages_.size() + batch.size());
        std::move(batch.begin(), batch.end(), std::back_inserter(pages_));
        return noErr;
    }
    std::vector<std::unique_ptr<SpecialPage>> merged;
    merged.reserve(pages_.size() + batch.size());
    std::merge(std::make_move_iterator(pages_.begin()), std::make_move_iterator(pages_.end()),
               std::make_move_iterator(batch.begin()), std::make_move_iterator(batch.end()), std::back_inserter(merged),
               byStart);
    pages_ = std::move(merged);
    return noErr;
}

bool InsertList::canPromote(const SpecialPage* page) const
{
    const long i = indexOfPage(page);
    return i > 0 && pages_[static_cast<size_t>(i - 1)]->startPage() == page->startPage();
}

void InsertList::promote(const SpecialPage* page)
{
    if (!canPromote(page))
        return;
    const auto i = static_cast<size_t>(indexOfPage(page));
    std::swap(pages_[i - 1], pages_[i]);
}

bool InsertList::canDemote(const SpecialPage* page) const
{
    const long i = indexOfPage(page);
    return i >= 0 && i + 1 < count() && pages_[static_cast<size_t>(i + 1)]->startPage() == page->startPage();
}

void InsertList::demote(const SpecialPage* page)
{
    if (!canDemote(page))
        return;
    const auto i = static_cast<size_t>(indexOfPage(page));
    std::swap(pages_[i], pages_[i + 1]);
}

// --- ExceptionPageList ---------------------------------------------------------------------

namespace {

using ExceptionPtr = std::unique_ptr<SpecialPage>;

ExceptionPage& asException(const ExceptionPtr& p) { return static_cast<ExceptionPage&>(*p); }

// The walk of one new range over the entries, written once over two containers. Each
// adapter provides: first(s) (where the walk may start), done, page, next, insertBefore,
// insertAfter (returns the new entry), erase (returns the entry that took its place), and
// setStart (returns the same entry, which keeps its position).
template <class Seq> void walkException(Seq& seq, ExceptionPtr n)
{
    const int32_t s = n->startPage();
    const int32_t e = asException(n).endPage();
    auto it = seq.first(s);
    while (!seq.done(it)) {
        ExceptionPage& E = seq.page(it);
        if (s > E.endPage()) {
            it = seq.next(it); // N lies after E
        } else if (s < E.startPage()) {
            if (e < E.startPage()) {
                seq.insertBefore(it, std::move(n)); // wholly before E
                return;
            }
            if (e < E.endPage())
                it = seq.setStart(it, e + 1); // N goes in front of E next time round
            else
                it = seq.erase(it); // N covers E
        } else if (s > E.startPage()) {
            if (e >= E.endPage()) {
                E.setEndPage(s - 1);
                it = seq.next(it);
            } else {
                // N lies strictly inside E: the tail becomes a range of its own, and N goes
                // between the two halves when the walk reaches the tail.
                ExceptionPtr tail = E.clone();
                tail->setStartPage(e + 1);
                E.setEndPage(s - 1);
                it = seq.insertAfter(it, std::move(tail));
            }
        } else if (e < E.endPage()) {
            it = seq.setStart(it, e + 1); // same start, N shorter
        } else {
            it = seq.erase(it); // same start, N covers E
        }
    }
    seq.append(std::move(n));
}

// The walk over the vector. While the list keeps its invariant (sorted, each range valid,
// none overlapping) the ends are sorted too, so the entries the walk would step over (those
// ending before N starts) are a prefix found by binary search; otherwise (page numbers were
// changed in place) it walks literally from the front.
struct VectorWalk {
    std::vector<ExceptionPtr>& v;
    bool keepsInvariant;
    size_t first(int32_t s) const
    {
        if (!keepsInvariant)
            return 0;
        auto it = std::partition_point(v.begin(), v.end(),
                                       [s](const ExceptionPtr& p) { return asException(p).endPage() < s; });
        return static_cast<size_t>(it - v.begin());
    }
    bool done(size_t i) const { return i >= v.size(); }
    ExceptionPage& page(size_t i) const { return asException(v[i]); }
    size_t next(size_t i) const { return i + 1; }
    void insertBefore(size_t i, ExceptionPtr p) { v.insert(v.begin() + static_cast<long>(i), std::move(p)); }
    size_t insertAfter(size_t i, ExceptionPtr p)
    {
        v.insert(v.begin() + static_cast<long>(i) + 1, std::move(p));
        return i + 1;
    }
    size_t erase(size_t i)
    {
        v.erase(v.begin() + static_cast<long>(i));
        return i;
    }
    size_t setStart(size_t i, int32_t start)
    {
        v[i]->setStartPage(start);
        return i;
    }
    void append(ExceptionPtr p) { v.push_back(std::move(p)); }
};

// The same walk over a tree keyed by start page, for a large batch on a list that keeps its
// invariant: inserting or removing an entry costs O(log n) instead of moving the vector's
// tail. The walk keeps the keys unique: every start it sets or inserts lies after the
// previous entry's end and before the next entry's start.
struct TreeWalk {
    using Map = std::map<int32_t, ExceptionPtr>;
    using It = Map::iterator;
    Map& m;
    It first(int32_t s)
    {
        It it = m.upper_bound(s);
        if (it != m.begin()) {
            It before = std::prev(it);
            if (asException(before->second).endPage() >= s)
                return before;
        }
        return it;
    }
    bool done(It it) const { return it == m.end(); }
    ExceptionPage& page(It it) const { return asException(it->second); }
    It next(It it) const { return std::next(it); }
    void insertBefore(It it, ExceptionPtr p)
    {
        const int32_t key = p->startPage();
        m.emplace_hint(it, key, std::move(p));
    }
    It insertAfter(It it, ExceptionPtr p)
    {
        const int32_t key = p->startPage();
        return m.emplace_hint(std::next(it), key, std::move(p));
    }
    It erase(It it) { return m.erase(it); }
    It setStart(It it, int32_t start)
    {
        It after = std::next(it);
        auto node = m.extract(it);
        node.mapped()->setStartPage(start);
        node.key() = start;
        return m.insert(after, std::move(node));
    }
    void append(ExceptionPtr p)
    {
        const int32_t key = p->startPage();
        m.emplace_hint(m.end(), key, std::move(p));
    }
};

constexpr size_t kTreeWalkBatch = 64;

bool keepsInvariant(const std::vector<ExceptionPtr>& v)
{
    for (size_t i = 0; i < v.size(); ++i) {
        const ExceptionPage& p = asException(v[i]);
        if (p.startPage() > p.endPage())
            return false;
        if (i + 1 < v.size() && p.endPage() >= v[i + 1]->startPage())
            return false;
    }
    return true;
}

} // namespace

ExceptionPageList::ExceptionPageList(const ExceptionPageList& other) : SpecialPageList()
{
    std::vector<const SpecialPage*> entries;
    entries.reserve(other.pages_.size());
    for (const auto& p : other.pages_)
        entries.push_back(p.get());
    if (add(entries) != noErr) {
        // An entry whose pages were edited in place: copy as it stands rather than lose it.
        pages_.clear();
        for (const auto& p : other.pages_)
            pages_.push_back(p->clone());
    }
}

ExceptionPageList& ExceptionPageList::operator=(const ExceptionPageList& other)
{
    if (this != &other) {
        ExceptionPageList copy(other);
        *this = std::move(copy);
    }
    return *this;
}

ExceptionPage* ExceptionPageList::pageAtIndex(long i) const
{
    return static_cast<ExceptionPage*>(SpecialPageList::pageAtIndex(i));
}

std::unique_ptr<SpecialPageList> ExceptionPageList::clone() const { return std::make_unique<ExceptionPageList>(*this); }

OSStatus ExceptionPageList::add(std::span<const SpecialPage* const> pages)
{
    // A range ending before it starts would make the walk split forever.
    for (const SpecialPage* p : pages) {
        const auto* e = dynamic_cast<const ExceptionPage*>(p);
        if (!e || e->endPage() < e->startPage())
            return paramErr;
    }
    if (pages.empty())
        return noErr;
    // The walk trims, splits and deletes entries, and the caller may hand us entries of this
    // very list: clone the whole batch before anything changes.
    std::vector<ExceptionPtr> batch;
    batch.reserve(pages.size());
    for (const SpecialPage* p : pages)
        batch.push_back(p->clone());

    // A dialog's few ranges go straight into the vector: a binary search and a move of the
    // tail per change. A batch (a ticket being read) goes through a tree, so that it costs
    // O((n + k) log(n + k)) rather than a move of the tail per range; building the tree costs
    // O(n), which only a batch pays back.
    const bool ordered = keepsInvariant(pages_);
    if (!ordered || pages.size() < kTreeWalkBatch) {
        VectorWalk walk{pages_, ordered};
        for (ExceptionPtr& n : batch)
            walkException(walk, std::move(n));
        return noErr;
    }
    TreeWalk::Map tree;
    for (auto& p : pages_) {
        const int32_t key = p->startPage();
        tree.emplace_hint(tree.end(), key, std::move(p));
    }
    TreeWalk walk{tree};
    for (ExceptionPtr& n : batch)
        walkException(walk, std::move(n));
    pages_.clear();
    pages_.reserve(tree.size());
    for (auto& [key, p] : tree)
        pages_.push_back(std::move(p));
    return noErr;
}

// --- Undo ----------------------------------------------------------------------------------

namespace {

std::unique_ptr<Cover> cloneCover(const std::unique_ptr<Cover>& c) { return c ? std::make_unique<Cover>(*c) : nullptr; }

} // namespace

OSStatus SaveUndoState(SpecialPagesState* state)
{
    if (!state)
        return kPMNoContext;
    auto& u = state->undo;
    u.frontCover = cloneCover(state->frontCover);
    u.backCover = cloneCover(state->backCover);
    u.inserts = std::make_unique<InsertList>(state->inserts);
    u.exceptions = std::make_unique<ExceptionPageList>(state->exceptions);
    return noErr;
}

bool CanUndo(const SpecialPagesState& state)
{
    const auto& u = state.undo;
    return u.frontCover || u.backCover || u.inserts || u.exceptions;
}

OSStatus PerformUndo(SpecialPagesState* state)
{
    if (!state)
        return kPMNoContext;
    if (!CanUndo(*state))
        return noErr;
    auto& u = state->undo;
    state->frontCover = std::move(u.frontCover);
    state->backCover = std::move(u.backCover);
    state->inserts = u.inserts ? std::move(*u.inserts) : InsertList();
    state->exceptions = u.exceptions ? std::move(*u.exceptions) : ExceptionPageList();
    u = SpecialPagesState::Snapshot();
    return noErr;
}

// --- Ticket storage ------------------------------------------------------------------------

OSStatus WriteSpecialPagesToTicket(const SpecialPagesState* state, Ticket* ticket)
{
    if (!state || !ticket)
        return paramErr;
    for (const char* key : {kSpecialPagesInsertListKey, kSpecialPagesExceptionListKey, kSpecialPagesFrontCoverKey,
                            kSpecialPagesBackCoverKey})
        if (ticket->isLocked(key))
            return kPMTicketItemLocked;

    const auto put = [ticket](const char* key, const pl::ValuePtr& value) {
        ticket->set(key, value, kTalmoSpecialPagesCreator); // a null value removes the item
    };
    put(kSpecialPagesInsertListKey, state->inserts.asTicket());
    put(kSpecialPagesExceptionListKey, state->exceptions.asTicket());
    put(kSpecialPagesFrontCoverKey, state->frontCover ? state->frontCover->asTicket() : nullptr);
    // A booklet's back cover is the front cover unless they differ: keep only the front.
    const auto booklet = pl::as<pl::Boolean>(ticket->get(kBookletLayoutKey));
    if (booklet && booklet->value && state->frontCover && state->backCover && *state->frontCover == *state->backCover) {
        ticket->remove(kSpecialPagesBackCoverKey);
        return noErr;
    }
    put(kSpecialPagesBackCoverKey, state->backCover ? state->backCover->asTicket() : nullptr);
    return noErr;
}

namespace {

// Every dictionary element of the array under `key` made into a record; other elements are
// skipped.
template <class Record> std::vector<std::unique_ptr<Record>> readRecords(const Ticket& ticket, const char* key)
{
    std::vector<std::unique_ptr<Record>> records;
    if (auto array = pl::as<pl::Array>(ticket.get(key))) {
        records.reserve(array->size());
        for (const pl::ValuePtr& v : *array)
            if (auto d = pl::as<pl::Dictionary>(v))
                records.push_back(std::make_unique<Record>(d));
    }
    return records;
}

// The stored exception ranges. A range that ends before it starts (a missing "EndPage" reads
// as 0) would be refused by the list, losing the user's settings without a word: it is kept
// as its first page, and the repair is reported.
std::vector<std::unique_ptr<ExceptionPage>> readExceptions(const Ticket& ticket)
{
    std::vector<std::unique_ptr<ExceptionPage>> records;
    const auto array = pl::as<pl::Array>(ticket.get(kSpecialPagesExceptionListKey));
    if (!array)
        return records;
    records.reserve(array->size());
    for (const pl::ValuePtr& v : *array) {
        const auto d = pl::as<pl::Dictionary>(v);
        if (!d)
            continue;
        auto e = std::make_unique<ExceptionPage>(d);
        const int32_t start = e->startPage();
        if (e->endPage() < start) {
            if (!d->getInt(kEndPageField))
                std::fprintf(stderr, "DEBUG: exception at page %d has no EndPage; kept as page %d\n", start, start);
            else
                std::fprintf(stderr, "DEBUG: exception range %d-%d ends before it starts; kept as page %d\n", start,
                             e->endPage(), start);
            e->setEndPage(start);
        }
        records.push_back(std::move(e));
    }
    return records;
}

} // namespace

OSStatus ReadSpecialPagesFromTicket(SpecialPagesState* state, const Ticket* ticket)
{
    if (!state || !ticket)
        return paramErr;
    state->frontCover.reset();
    state->backCover.reset();
    state->inserts.clear();
    state->exceptions.clear();

    state->inserts.add(readRecords<Insert>(*ticket, kSpecialPagesInsertListKey));
    state->exceptions.add(readExceptions(*ticket));

    state->jobStock.reset();
    if (auto stock = pl::as<pl::Dictionary>(ticket->get(kJobLevelStockKey)))
        state->jobStock = std::make_unique<Stock>(stock);

    if (auto front = pl::as<pl::Dictionary>(ticket->get(kSpecialPagesFrontCoverKey)))
        state->frontCover = std::make_unique<Cover>(front);
    const auto booklet = pl::as<pl::Boolean>(ticket->get(kBookletLayoutKey));
    if (booklet && booklet->value)
        state->backCover = cloneCover(state->frontCover);
    else if (auto back = pl::as<pl::Dictionary>(ticket->get(kSpecialPagesBackCoverKey)))
        state->backCover = std::make_unique<Cover>(back);
    return noErr;
}

} // namespace talmo
