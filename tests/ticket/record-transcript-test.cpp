// Records read from the stored dictionaries of data/record-cases.txt: the fields as read, the
// dictionary written back and the summaries at job and page level, against a reviewed
// transcript. Whatever a record writes must read back to the same dictionary.
// TALMO_UPDATE_GOLDEN=1 rewrites the transcript; review the diff before committing it.
#include "ticket/ticket.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

using namespace talmo;

namespace {

std::string dataPath(const char* name) { return std::string(TALMO_SOURCE_DIR) + "/tests/ticket/data/" + name; }

// One line per value, with its type: 3, 3.5r, true, "text", <data 2>, {Key=..., ...}, [...].
std::string show(const pl::ValuePtr& v)
{
    if (!v)
        return "null";
    if (auto i = pl::as<pl::Integer>(v))
        return std::to_string(i->value);
    if (auto r = pl::as<pl::Real>(v)) {
        std::ostringstream os;
        os << r->value << "r";
        return os.str();
    }
    if (auto b = pl::as<pl::Boolean>(v))
        return b->value ? "true" : "false";
    if (auto s = pl::as<pl::String>(v))
        return "\"" + s->text + "\"";
    std::string out;
    if (auto a = pl::as<pl::Array>(v)) {
        for (size_t i = 0; i < a->size(); ++i)
            out += (i ? ", " : "") + show(a->at(i));
        return "[" + out + "]";
    }
    if (auto d = pl::as<pl::Dictionary>(v)) {
        for (const auto& [k, item] : *d)
            out += (out.empty() ? "" : ", ") + k + "=" + show(item);
        return "{" + out + "}";
    }
    return "<other>";
}

std::string text(const std::optional<std::string>& t) { return t ? "\"" + *t + "\"" : "null"; }
std::string n(int32_t v) { return v == kNotSet ? "-" : std::to_string(v); }

std::string fields(const Stock& s)
{
    return "size " + n(s.size()) + " " + n(s.width()) + "x" + n(s.length()) + ", type " + n(s.type()) + " " +
           text(s.customType()) + " modulus " + n(s.modulus()) + ", color " + n(s.color()) + " " +
           text(s.customColor()) + ", punched " + n(s.punched()) + ", weight " + n(s.weight()) + ", description " +
           text(s.description()) + ", coated " + n(s.sidesCoated()) + "/" + n(s.coatingType()) + ", finish " +
           n(s.finish()) + ", grain " + n(s.grain()) + ", name " + text(s.customName()) +
           (s.customNameOnly() ? " only" : "") + ", comment " + text(s.comment()) + ", source " + n(s.source());
}

std::string fields(const FullColorOptions& o)
{
    int32_t a = 0, b = 0, c = 0;
    FullColorOptions::Name name;
    std::string out;
    auto one = [&](const char* label, OSStatus (FullColorOptions::*get)(int32_t*) const) {
        (o.*get)(&a);
        out += std::string(label) + " " + n(a) + ", ";
    };
    auto profile = [&](const char* label, OSStatus (FullColorOptions::*get)(int32_t*, FullColorOptions::Name*) const) {
        name.reset();
        (o.*get)(&a, &name);
        out += std::string(label) + " " + n(a) + " " + text(name) + ", ";
    };
    auto gray = [&](const char* label, OSStatus (FullColorOptions::*get)(FullColorOptions::Name*) const) {
        (o.*get)(&name);
        out += std::string(label) + " " + text(name) + ", ";
    };
    one("lightness", &FullColorOptions::lightness);
    one("contrast", &FullColorOptions::contrast);
    one("saturation", &FullColorOptions::saturation);
    o.colorCast(&a, &b, &c);
    out += "cast " + n(a) + "/" + n(b) + "/" + n(c) + ", ";
    one("trapping", &FullColorOptions::trapping);
    o.trappingAdjustment(&a, &b);
    out += "trap " + n(a) + "/" + n(b) + ", ";
    one("overprint", &FullColorOptions::blackOverprint);
    o.trc(&name);
    out += "trc " + text(name) + ", ";
    profile("rgb images", &FullColorOptions::rgbImagesProfile);
    profile("rgb text", &FullColorOptions::rgbTextAndGraphicsProfile);
    profile("cmyk images", &FullColorOptions::cmykImagesProfile);
    profile("cmyk text", &FullColorOptions::cmykTextAndGraphicsProfile);
    gray("gray images", &FullColorOptions::grayImagesProfile);
    gray("gray text", &FullColorOptions::grayTextAndGraphicsProfile);
    profile("destination", &FullColorOptions::destinationProfile);
    one("rendering", &FullColorOptions::imageObjectRendering);
    one("/", &FullColorOptions::textObjectRendering);
    one("/", &FullColorOptions::graphicObjectRendering);
    return out.substr(0, out.size() - 2);
}

std::string fields(const _IS_Options& o)
{
    return "valid " + n(o.valid) + ", size " + n(o.stockSize) + ", duplex " + n(o.duplex) + ", option " + n(o.option) +
           ", inches " + n(o.inches) + ", shift " + n(o.x1) + " " + n(o.y1) + " / " + n(o.x2) + " " + n(o.y2);
}

std::string bracket(std::string_view key) { return "[" + std::string(key) + "]"; }

std::string oneLine(std::string s)
{
    for (size_t p = s.find('\n'); p != std::string::npos; p = s.find('\n', p))
        s.replace(p, 1, " / ");
    return s;
}

struct Kind {
    // Reads the dictionary and describes the record; returns what it writes.
    pl::DictPtr (*read)(const pl::DictPtr& dict, std::string& out);
};

pl::DictPtr readStock(const pl::DictPtr& d, std::string& out)
{
    const Stock s(d);
    StockTextSource texts;
    texts.localized = bracket;
    texts.mediaTypeText = [](int32_t type) -> std::optional<std::string> {
        return type == 24 ? std::optional<std::string>("Tab Stock") : std::nullopt;
    };
    texts.installedOptionText = [](std::string_view key) { return "Inserter " + bracket(key); };
    out += "fields: " + fields(s) + "\n";
    for (JobContext c : {kJobContextJob, kJobContextCovers}) {
        std::string view;
        ShowStockSummary(&texts, &view, &s, c);
        out += std::string(c == kJobContextJob ? "job" : "page") + ": " + oneLine(view) + "\n";
    }
    return s.asTicket();
}

pl::DictPtr readColor(const pl::DictPtr& d, std::string& out)
{
    const FullColorOptions o(d);
    out += "fields: " + fields(o) + "\n";
    for (int32_t c : {0, 4}) {
        std::string view;
        ShowFullColorSummary(o, c, bracket, &view);
        out += std::string(c ? "page" : "job") + ": " + oneLine(view) + "\n";
    }
    return o.asTicket();
}

pl::DictPtr readShift(const pl::DictPtr& d, std::string& out)
{
    _IS_Options o;
    o.valid = 0;
    ImageShiftSetOptionsFromTicket(&o, d);
    out += "fields: " + fields(o) + "\n";
    for (int32_t c : {0, 4})
        out += std::string(c ? "page" : "job") + ": " + oneLine(GenerateImageShiftSummary(o, c, bracket)) + "\n";
    return ImageShiftCreateTicketFromOptions(&o);
}

pl::DictPtr readCover(const pl::DictPtr& d, std::string& out)
{
    const Cover c(d);
    out +=
        "fields: start " + n(c.startPage()) + ", sides " + n(c.sidesImaged()) + ", stock " + fields(c.stock()) + "\n";
    return c.asTicket();
}

pl::DictPtr readInsert(const pl::DictPtr& d, std::string& out)
{
    const Insert i(d);
    out +=
        "fields: start " + n(i.startPage()) + ", quantity " + n(i.quantity()) + ", stock " + fields(i.stock()) + "\n";
    return i.asTicket();
}

pl::DictPtr readException(const pl::DictPtr& d, std::string& out)
{
    const ExceptionPage e(d);
    out += "fields: pages " + n(e.startPage()) + "-" + n(e.endPage()) + ", plex " + n(e.plex()) + ", screen " +
           n(e.halftoneScreen()) + ", antialiasing " + n(e.antialiasing()) + ", output colour " + n(e.outputColor()) +
           ", lighten " + n(e.lightenDarken()) + "\n  stock " + fields(e.stock()) + "\n  shift " +
           fields(*e.imageShift()) + "\n  colour " + fields(e.colorOptions()) + "\n";
    return e.asTicket();
}

// The special pages items of a ticket: what the panel reads (lists in order, covers, any
// diagnostic) and what it writes back.
pl::DictPtr readSpecialPages(const pl::DictPtr& d, std::string& out)
{
    Ticket ticket;
    ticket.loadDictionary(d, "T");
    SpecialPagesState state;
    testing::internal::CaptureStderr();
    ReadSpecialPagesFromTicket(&state, &ticket);
    out += testing::internal::GetCapturedStderr();
    out += "inserts:";
    for (long i = 0; i < state.inserts.count(); ++i)
        out += " " + n(state.inserts.pageAtIndex(i)->startPage()) + "#" + n(state.inserts.pageAtIndex(i)->quantity());
    out += "\nexceptions:";
    for (long i = 0; i < state.exceptions.count(); ++i) {
        const ExceptionPage* e = state.exceptions.pageAtIndex(i);
        out += " " + n(e->startPage()) + "-" + n(e->endPage()) + "#" + n(e->halftoneScreen());
    }
    const auto sides = [](const std::unique_ptr<Cover>& c) { return c ? n(c->sidesImaged()) : std::string("none"); };
    out += "\ncovers: " + sides(state.frontCover) + " / " + sides(state.backCover) + "\n";
    Ticket written;
    if (auto booklet = ticket.get(kBookletLayoutKey))
        written.set(kBookletLayoutKey, booklet, "T");
    WriteSpecialPagesToTicket(&state, &written);
    return written.asDictionary();
}

// A page list typed into a dialog ("Text", "Ranges" for range mode): status, position, ranges.
pl::DictPtr readPageList(const pl::DictPtr& d, std::string& out)
{
    const PageRangesResult r = ParsePageRanges(d->getString("Text").value_or(""), d->getBool("Ranges").value_or(true));
    out += "status " + std::to_string(r.status) + " at " + std::to_string(r.position) + ":";
    for (const PageRange& range : r.ranges)
        out += " " + std::to_string(range.first) + "+" + std::to_string(range.count);
    out += "\n";
    return d;
}

// How side 2 follows side 1 ("Mode", "Duplex", "X1" ... "Y2"), and the unit switch of "X1".
pl::DictPtr readShiftRule(const pl::DictPtr& d, std::string& out)
{
    const auto v = [&](const char* key) { return static_cast<int32_t>(d->getInt(key).value_or(0)); };
    const ImageShiftSide2 r = ImageShiftSide2Rule(v("Mode"), v("Duplex"), v("X1"), v("Y1"), v("X2"), v("Y2"));
    out += "side 2: " + n(r.x2) + " " + n(r.y2) + ", editable:" + (r.x1Editable ? " x1 y1" : "") +
           (r.x2Editable ? " x2" : "") + (r.y2Editable ? " y2" : "") + "; x1 in mm " +
           n(ImageShiftConvertUnit(v("X1"), false)) + ", in inches " + n(ImageShiftConvertUnit(v("X1"), true)) + "\n";
    return d;
}

// One stock menu choice ("Command", "Value", "Context") applied to "Stock"; a dialog it opens
// answers "Answer" (absent: Cancel) and shows what it was handed.
pl::DictPtr readStockCommand(const pl::DictPtr& d, std::string& out)
{
    Stock s(d->getDict("Stock"));
    const pl::ValuePtr answer = d->get("Answer");
    const auto dict = pl::as<pl::Dictionary>(answer);
    const auto text = [&]() -> std::optional<std::string> {
        return pl::as<pl::String>(answer) ? std::optional(pl::as<pl::String>(answer)->text) : std::nullopt;
    };
    const auto number = [&]() -> std::optional<int32_t> {
        return pl::as<pl::Integer>(answer) ? std::optional(int32_t(pl::as<pl::Integer>(answer)->value)) : std::nullopt;
    };
    const auto seen = [&](const Stock& at) { out += "dialog sees: " + show(at.asTicket()) + "\n"; };
    StockCommandDialogs dialogs;
    dialogs.customSize = [&](const Stock& at) -> std::optional<StockDimensions> {
        seen(at);
        if (!dict)
            return std::nullopt;
        return StockDimensions{int32_t(dict->getInt("Width").value_or(0)), int32_t(dict->getInt("Length").value_or(0))};
    };
    dialogs.orderedStock = [&](const Stock& at) -> std::optional<OrderedStockChoice> {
        seen(at);
        if (!dict)
            return std::nullopt;
        return OrderedStockChoice{dict->getString("Name").value_or(""), int32_t(dict->getInt("Count").value_or(0))};
    };
    dialogs.customColor = dialogs.customType = dialogs.description = [&](const Stock& at) {
        seen(at);
        return text();
    };
    dialogs.precutTab = dialogs.customWeight = [&](const Stock& at) {
        seen(at);
        return number();
    };
    dialogs.advanced = dialogs.library = [&](Stock& at) {
        seen(at);
        if (dict)
            at = Stock(dict);
        return dict != nullptr;
    };
    uint32_t command = 0;
    for (char c : d->getString("Command").value_or(""))
        command = command << 8 | uint8_t(c);
    const auto result = ApplyStockCommand(s, command, int32_t(d->getInt("Value").value_or(0)),
                                          int32_t(d->getInt("Context").value_or(0)), dialogs);
    out += std::string(result == StockCommandResult::Applied     ? "applied"
                       : result == StockCommandResult::Cancelled ? "cancelled"
                                                                 : "unknown") +
           ": " + fields(s) + "\n";
    return s.asTicket();
}

TEST(RecordTranscript, StoredDictionaries)
{
    // The image shift summary's numbers follow the locale.
    struct Locale {
        std::optional<std::string> saved;
        Locale()
        {
            if (const char* old = std::getenv("LC_ALL"))
                saved = old;
            ::setenv("LC_ALL", "en_US.UTF-8", 1);
        }
        ~Locale() { saved ? ::setenv("LC_ALL", saved->c_str(), 1) : ::unsetenv("LC_ALL"); }
    } locale;
    const std::map<std::string, Kind> kinds = {
        {"Stock", {readStock}},
        {"FullColor", {readColor}},
        {"ImageShift", {readShift}},
        {"Cover", {readCover}},
        {"Insert", {readInsert}},
        {"Exception", {readException}},
        {"SpecialPages", {readSpecialPages}},
        {"PageList", {readPageList}},
        {"ShiftRule", {readShiftRule}},
        {"StockCommand", {readStockCommand}},
    };
    std::ifstream in(dataPath("record-cases.txt"));
    ASSERT_TRUE(in);
    std::string transcript;
    int count = 0;
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#')
            continue;
        // "!" marks a case whose written form is not expected to read back (saturated values).
        const bool readsBack = line[0] != '!';
        const size_t tab = line.find('\t');
        const auto kind = kinds.find(line.substr(readsBack ? 0 : 1, tab - (readsBack ? 0 : 1)));
        ASSERT_NE(kind, kinds.end()) << line;
        pl::ParseResult r;
        const std::string body = tab == std::string::npos ? "" : line.substr(tab + 1);
        auto dict =
            pl::as<pl::Dictionary>(pl::readPlist("<plist version=\"1.0\"><dict>" + body + "</dict></plist>", &r));
        ASSERT_TRUE(dict) << line << ": " << r.message;
        std::string out;
        const pl::DictPtr written = kind->second.read(dict, out);
        transcript += "== " + line + "\n" + out + "ticket: " + show(written) + "\n";
        std::string again;
        EXPECT_TRUE(!readsBack || pl::equal(kind->second.read(written, again), written))
            << "written form does not read back: " << line;
        ++count;
    }
    EXPECT_GT(count, 50);
    if (std::getenv("TALMO_UPDATE_GOLDEN"))
        std::ofstream(dataPath("record-cases.golden"), std::ios::binary) << transcript;
    std::ifstream golden(dataPath("record-cases.golden"), std::ios::binary);
    std::stringstream expected;
    expected << golden.rdbuf();
    // Compared line by line, so a failure names the case.
    std::istringstream a(transcript), e(expected.str());
    std::string la, le, lastCase;
    for (int lineNo = 1; std::getline(a, la); ++lineNo) {
        if (la.starts_with("== "))
            lastCase = la;
        ASSERT_TRUE(std::getline(e, le)) << "transcript longer than the golden one at line " << lineNo;
        ASSERT_EQ(la, le) << "line " << lineNo << " of " << lastCase;
    }
    EXPECT_FALSE(std::getline(e, le)) << "golden transcript has more lines";
}

} // namespace
