// The IPP job template attributes (RFC 8011, PWG 5100.1 finishings, PWG 5100.7 media-col)
// that a print settings ticket determines. docs/printing.md holds the same table in prose.
#include "host/print-job.h"

#include "settings/paper-sizes.h"
#include "settings/ticket-keys.h"
#include "ticket/ticket.h"
#include "tpif/tpif.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace talmo::host {

namespace {

using Value = std::optional<std::string>;
using Pairs = std::initializer_list<std::pair<int32_t, const char*>>;

std::optional<int32_t> number(const pl::DictPtr& t, const char* key)
{
    auto v = t->getInt(key);
    if (!v || *v < INT32_MIN || *v > INT32_MAX || *v == kNotSet)
        return std::nullopt;
    return int32_t(*v);
}

const char* lookup(Pairs pairs, std::optional<int32_t> value)
{
    if (value)
        for (const auto& [code, keyword] : pairs)
            if (code == *value)
                return keyword;
    return nullptr;
}

Value keyword(Pairs pairs, std::optional<int32_t> value)
{
    if (const char* k = lookup(pairs, value))
        return k;
    return std::nullopt;
}

// A text member of a collection value: quoted, so that blanks, commas and braces stay in it.
std::string quoted(std::string_view text)
{
    std::string out = "\"";
    for (char c : text) {
        if (c == '\\' || c == '"')
            out += '\\';
        out += c;
    }
    return out + '"';
}

Value copies(const pl::DictPtr& t)
{
    auto n = number(t, kPMCopiesKey);
    if (!n || *n < 1)
        return std::nullopt;
    return std::to_string(*n);
}

// The dialog's page range first; the Advanced panel's pages to print when that is off.
Value pageRanges(const pl::DictPtr& t)
{
    auto first = number(t, kPMFirstPageKey), last = number(t, kPMLastPageKey);
    if (!first || !last) {
        if (number(t, kPagesToPrintSelectedKey).value_or(0) == 0)
            return std::nullopt;
        first = number(t, kPagesToPrintFromKey).value_or(1);
        last = number(t, kPagesToPrintToKey).value_or(1);
    }
    // A page range that covers every page is no range at all.
    if (*first < 1 || *last < *first || (*first == 1 && *last == INT32_MAX))
        return std::nullopt;
    return std::to_string(*first) + "-" + std::to_string(*last);
}

Value sides(const pl::DictPtr& t)
{
    return keyword({{1, "one-sided"}, {2, "two-sided-long-edge"}, {3, "two-sided-short-edge"}},
                   number(t, kFinishingDuplexKey));
}

Value colorMode(const pl::DictPtr& t)
{
    return keyword({{1, "monochrome"}, {2, "color"}}, number(t, kFinishingOutputColorKey));
}

Value outputBin(const pl::DictPtr& t)
{
    return keyword({{1, "auto"},
                    {2, "top"},
                    {3, "face-down"},
                    {4, "stacker"},
                    {5, "stacker-1"},
                    {6, "stacker-2"},
                    {7, "booklet-maker"}},
                   number(t, kFinishingOutputDestinationKey));
}

// Edges of the staple, punch and bind positions, portrait: 0 left, 1 top, 2 right, 3 bottom.
int edgeOf(int32_t position)
{
    switch (position) {
    case 10:
    case 15:
    case 32:
        return 0;
    case 11:
    case 33:
        return 1;
    case 13:
    case 16:
    case 35:
        return 2;
    case 12:
    case 34:
        return 3;
    default:
        return -1;
    }
}

void addStaple(const pl::DictPtr& t, std::vector<int>& out)
{
    if (auto one = lookup({{5, "20"}, {6, "21"}, {7, "22"}, {8, "23"}}, number(t, kFinishingStaple1ValueKey)))
        out.push_back(std::atoi(one));
    else if (int e = edgeOf(number(t, kFinishingStaple2ValueKey).value_or(0)); e >= 0)
        out.push_back(28 + e); // staple-dual-left, -top, -right, -bottom
    else if (auto c = number(t, kFinishingStapleCenterValueKey); c && *c >= 26 && *c <= 29)
        out.push_back(8); // saddle-stitch
}

void addPunch(const pl::DictPtr& t, std::vector<int>& out)
{
    const int edge = edgeOf(number(t, kFinishingHolePunchValueKey).value_or(0));
    if (edge < 0)
        return;
    // Hole counts are stored as 3, 4, 5 for two, three and four holes; three when unset.
    const int32_t holes = number(t, kFinishingHolePunchOptionsKey).value_or(4);
    const int base = holes == 3 ? 74 : holes == 5 ? 82 : 78; // punch-dual/-triple/-quad-left
    out.push_back(base + edge);
}

Value finishings(const pl::DictPtr& t)
{
    std::vector<int> f;
    const int32_t fold = number(t, kFinishingFoldValueKey).value_or(0);
    switch (number(t, kFinishingOptionsKey).value_or(0)) {
    case 1:
        f.push_back(3);
        break; // none
    case 3:
        f.push_back(13);
        break; // signature booklet: booklet-maker
    case 4:
    case 9:
    case 25:
    case 51:
        addStaple(t, f);
        break;
    case 14:
        if (int e = edgeOf(number(t, kFinishingBindValueKey).value_or(0)); e >= 0)
            f.push_back(50 + e); // bind-left ... bind-bottom
        break;
    case 18:
        if (auto k = lookup({{19, "96"}, {20, "100"}, {36, "94"}}, fold)) // letter, z, half-z
            f.push_back(std::atoi(k));
        break;
    case 24:
        if (auto k = lookup({{43, "93"}, {53, "13"}}, fold)) // fold-half; booklet-maker staples too
            f.push_back(std::atoi(k));
        break;
    case 30:
    case 52:
        addPunch(t, f);
        break;
    case 36:
        f.push_back(100);
        break; // fold-z
    case 40:
        if (fold >= 41 && fold <= 48)
            f.push_back(fold <= 44 ? 93 : fold <= 46 ? 96 : 100);
        break;
    case 49:
        addStaple(t, f);
        addPunch(t, f);
        break;
    case 50:
        addStaple(t, f);
        addPunch(t, f);
        f.push_back(100);
        break;
    default:
        break; // printer default, custom finishing (only TPIF can say it)
    }
    if (const int32_t offset = number(t, kFinishingOffsetKey).value_or(0); offset >= 3 && offset <= 5)
        f.push_back(14); // jog-offset
    if (f.empty())
        return std::nullopt;
    std::string out;
    for (int v : f)
        out += (out.empty() ? "" : ",") + std::to_string(v);
    return out;
}

// The job stock as a media collection: size, type, weight and colour.
Value mediaCol(const pl::DictPtr& t)
{
    auto dict = t->getDict(kJobLevelStockKey);
    if (!dict)
        return std::nullopt;
    const Stock stock(dict);
    std::string members;
    int32_t w = 0, h = 0;
    if (stock.size() == kStockSizeCustom || stock.size() == kNotSet) {
        w = stock.width() == kNotSet ? 0 : stock.width();
        h = stock.length() == kNotSet ? 0 : stock.length();
    } else {
        for (const _PaperSizeSettingMap* row = CompleteStockSizeMap; row->key; ++row)
            if (row->ticketValue == stock.size()) {
                w = row->widthHmm;
                h = row->heightHmm;
                break;
            }
    }
    if (w > 0 && h > 0)
        members += "media-size={x-dimension=" + std::to_string(w) + " y-dimension=" + std::to_string(h) + "}";
    auto add = [&](const char* name, const std::string& value) {
        members += (members.empty() ? "" : " ") + std::string(name) + "=" + value;
    };
    if (auto type = lookup({{1, "stationery"},
                            {2, "transparency"},
                            {3, "stationery-preprinted"},
                            {4, "pre-cut-tabs"},
                            {5, "full-cut-tabs"},
                            {8, "envelope"},
                            {9, "labels"},
                            {10, "stationery-recycled"},
                            {13, "bond"},
                            {14, "stationery-letterhead"},
                            {24, "tab-stock"},
                            {33, "tab-stock"}},
                           stock.type()))
        add("media-type", type);
    else if (stock.type() == kStockTypeCustom && stock.customType() && !stock.customType()->empty())
        add("media-type", quoted(*stock.customType()));
    if (stock.weight() != kNotSet && stock.weight() > 0)
        add("media-weight-metric", std::to_string(stock.weight()));
    if (auto color = lookup({{1, "white"},
                             {2, "blue"},
                             {3, "yellow"},
                             {4, "green"},
                             {5, "pink"},
                             {6, "no-color"},
                             {7, "buff"},
                             {8, "goldenrod"},
                             {9, "red"},
                             {11, "ivory"},
                             {12, "gray"},
                             {13, "orange"}},
                            stock.color()))
        add("media-color", color);
    else if (stock.color() == kStockColorCustom && stock.customColor() && !stock.customColor()->empty())
        add("media-color", quoted(*stock.customColor()));
    if (members.empty())
        return std::nullopt;
    return "{" + members + "}";
}

Value messageToOperator(const pl::DictPtr& t)
{
    auto text = t->getString(kJobNotesMessageKey);
    if (!text || text->empty())
        return std::nullopt;
    return *text; // libcups takes a text attribute it has no syntax for as one value, as it is
}

// The one table: each job template attribute and the rule that reads it from the ticket.
struct AttributeRule {
    const char* attribute;
    Value (*value)(const pl::DictPtr& ticket);
};
constexpr AttributeRule kJobAttributeRules[] = {
    {"copies", copies},
    {"page-ranges", pageRanges},
    {"sides", sides},
    {"media-col", mediaCol},
    {"output-bin", outputBin},
    {"finishings", finishings},
    {"print-color-mode", colorMode},
    {"job-message-to-operator", messageToOperator},
};

bool flagOn(const pl::DictPtr& t, const char* key)
{
    // A missing flag means "use the document or login name", as the job notes read it.
    return t->getBool(key).value_or(true);
}

} // namespace

JobRequest JobRequestFromTicket(const pl::DictPtr& ticketIn, const std::string& loginName)
{
    const pl::DictPtr t = ticketIn ? ticketIn : pl::makeDict();
    JobRequest r;
    const std::string document = t->getString(kPMJobNameKey).value_or("");
    const std::string notesName = t->getString(kJobNotesJobNameKey).value_or("");
    r.jobName = flagOn(t, kJobNotesUseJobNameKey) || notesName.empty() ? document : notesName;
    if (r.jobName.empty())
        r.jobName = "Untitled";
    const std::string sender = t->getString(kJobNotesSenderNameKey).value_or("");
    r.userName = flagOn(t, kJobNotesSenderUseLoginNameKey) || sender.empty() ? loginName : sender;
    for (const AttributeRule& rule : kJobAttributeRules)
        if (Value v = rule.value(t))
            r.options.push_back({rule.attribute, std::move(*v)});
    return r;
}

bool WantsTPIF(const pl::DictPtr& t)
{
    if (!t || !t->getDict(kTPIFOptionsKey))
        return false;
    auto emit = t->getInt(kEmitTPIFKey);
    return !emit || (*emit != 0 && *emit != 2);
}

std::string RenderTPIF(const pl::DictPtr& ticket)
{
    char* buf = nullptr;
    size_t len = 0;
    FILE* f = open_memstream(&buf, &len);
    if (!f)
        return {};
    WriteTPIF(f, ticket);
    tpif_ofp = nullptr;
    std::fflush(f);
    std::fclose(f);
    std::string out(buf ? buf : "", len);
    std::free(buf);
    return out;
}

} // namespace talmo::host
