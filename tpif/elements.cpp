#include "tpif/elements.h"

#include "tpif/escape.h"

#include <cstdarg>
#include <cstring>
#include <type_traits>

namespace talmo {

FILE* tpif_ofp = nullptr;
FILE* tpif_errfp = nullptr;

FILE* TPifDiagStream() { return tpif_errfp ? tpif_errfp : stderr; }

void DevWriteTpif(void* /*cookie*/, const char* text, size_t /*length*/)
{
    if (tpif_ofp && text)
        std::fputs(text, tpif_ofp);
}

void FinalizeMediaData(MediaData& media)
{
    media.customTypeName.reset();
    media.customColorName.reset();
    media.description.reset();
    media.mediaKey.reset();
}

void FinalizePageData(PageData& page)
{
    page.trc.reset();
    page.rgbImagesName.reset();
    page.rgbTextGraphicsName.reset();
    page.cmykImagesName.reset();
    page.cmykTextGraphicsName.reset();
    page.grayImagesName.reset();
    page.grayTextGraphicsName.reset();
    page.destinationName.reset();
}

namespace {

void diag(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
void diag(const char* fmt, ...)
{
    va_list ap;
    va_start(ap, fmt);
    std::vfprintf(TPifDiagStream(), fmt, ap);
    va_end(ap);
}

// The line buffer. Formatting never writes past its end: fixed texts always fit, and user
// texts go through text(), which cuts them to the room left for them. It is kept terminated at
// its length, which reads exactly as a zero-filled buffer would, without clearing 1 KB a line.
//
// add() formats %s, %d, %ld and %u itself: the writer spends most of its time formatting, and
// vsnprintf's generality (locale, widths, its string stream) costs several times the work.
class Line {
public:
    Line() { buf_[0] = 0; }
    void clear()
    {
        len_ = 0;
        buf_[0] = 0;
    }
    Line& add(const char* fmt, ...) __attribute__((format(printf, 2, 3)))
    {
        va_list ap;
        va_start(ap, fmt);
        for (const char* p = fmt; *p; ++p) {
            if (*p != '%') {
                const char* end = strchrnul(p, '%');
                append(p, static_cast<size_t>(end - p));
                p = end - 1;
                continue;
            }
            switch (*++p) {
            case 's': {
                const char* text = va_arg(ap, const char*);
                appendString(text ? text : "(null)");
                break;
            }
            case 'd':
                appendNumber(va_arg(ap, int));
                break;
            case 'u':
                appendNumber(va_arg(ap, unsigned));
                break;
            case 'l': // %ld
                ++p;
                appendNumber(va_arg(ap, long));
                break;
            case '%':
                append("%", 1);
                break;
            default: // never used by the element writers
                --p;
                break;
            }
        }
        va_end(ap);
        buf_[len_] = 0;
        return *this;
    }
    Line& addText(std::string_view text)
    {
        append(text.data(), text.size());
        buf_[len_] = 0;
        return *this;
    }
    // open + as much of the escaped `text` as fits + close; `close` is always kept whole.
    Line& text(const char* open, std::string_view text, const char* close)
    {
        return textBetween(open, text, close, std::strlen(close));
    }
    // "<tabs><name syntax="name" xml:space="preserve">text</name>\n", the text cut to fit.
    Line& named(const char* tabs, const char* name, std::string_view text)
    {
        addText(tabs).addText("<").addText(name).addText(" syntax=\"name\" xml:space=\"preserve\">");
        const size_t nameLen = std::strlen(name);
        fitText(text, nameLen + 4); // "</" name ">\n"
        return addText("</").addText(std::string_view(name, nameLen)).addText(">\n");
    }
    const char* c_str() const { return buf_; }
    size_t size() const { return len_; }
    void send(const writeData* sink) const { sink->write(sink->cookie, buf_, len_); }

private:
    // Appends what fits, keeping room for the terminator.
    void append(const char* p, size_t n)
    {
        const size_t room = sizeof buf_ - 1 - len_;
        if (n > room)
            n = room;
        std::memcpy(buf_ + len_, p, n);
        len_ += n;
    }
    void appendString(const char* p) { append(p, std::strlen(p)); }
    template <class T> void appendNumber(T value)
    {
        char digits[24];
        char* end = digits + sizeof digits;
        char* p = end;
        using U = std::make_unsigned_t<T>;
        bool negative = false;
        if constexpr (std::is_signed_v<T>)
            negative = value < 0;
        U magnitude = negative ? U(0) - static_cast<U>(value) : static_cast<U>(value);
        do {
            *--p = static_cast<char>('0' + magnitude % 10);
            magnitude /= 10;
        } while (magnitude);
        if (negative)
            *--p = '-';
        append(p, static_cast<size_t>(end - p));
    }
    Line& textBetween(const char* open, std::string_view text, const char* close, size_t closeLen)
    {
        addText(open);
        fitText(text, closeLen);
        return addText(std::string_view(close, closeLen));
    }
    // As much of the escaped `text` as fits with `reserve` bytes kept free after it.
    void fitText(std::string_view text, size_t reserve)
    {
        const size_t free = sizeof buf_ - 1 - len_;
        const size_t room = free > reserve ? free - reserve : 0;
        const size_t n = TPifFitEscapedText(text, room);
        std::memcpy(buf_ + len_, text.data(), n);
        len_ += n;
        buf_[len_] = 0;
    }

    char buf_[kTPifLineBufferSize];
    size_t len_ = 0;
};

void sendText(const writeData* sink, const char* text) { sink->write(sink->cookie, text, std::strlen(text)); }

// "\t\t<name syntax=\"keyword\">keyword</name>\n", or an empty text for an unknown value.
void keywordElement(const writeData* sink, const char* name, const char* keyword)
{
    Line line;
    if (keyword)
        line.add("\t\t<%s syntax=\"keyword\">%s</%s>\n", name, keyword, name);
    line.send(sink);
}

void nameElement(Line& line, const char* tabs, const char* name, std::string_view text)
{
    line.named(tabs, name, text);
}

template <size_t N> const char* pick(const char* const (&table)[N], int32_t index)
{
    return index >= 0 && static_cast<size_t>(index) < N ? table[index] : nullptr;
}

const char* const kOutputBin[] = {"automatic", "top",       "stacker",   "side",  "top-1",
                                  "top-2",     "stacker-1", "stacker-2", "top-1", "stacker-1"};
const char* const kRenderingIntent[] = {
    nullptr, "saturation", "relative-colorimetric", "absolute-colorimetric", "perceptual", "pure-text", "automatic"};
const char* const kPageDelivery[] = {
    nullptr, nullptr, "same-order-face-down", "reverse-order-face-up", "same-order-face-up", "reverse-order-face-down"};
const char* const kAdjustNames[] = {"adjust-lightness", "adjust-contrast",      "adjust-saturation",
                                    "adjust-cyan-red",  "adjust-magenta-green", "adjust-yellow-blue"};
const char* const kRenderingNames[] = {"rendering-intent-images", "rendering-intent-text", "rendering-intent-graphics"};

const char* const kHalftone[] = {nullptr,          "85-lpi",          "106-lpi",
                                 "125-lpi",        "134-lpi",         "156-lpi",
                                 "200-dpi",        "150-dpi",         "200-lpi",
                                 "300-lpi",        "600-lpi",         "300-dpi",
                                 "600-dpi",        "175-dpi",         "stochastic",
                                 "53-lpi",         "85-lpi",          "106-lpi",
                                 "71-lpi",         "85-lpi-enhanced", "106-lpi-enhanced",
                                 "120-lpi",        "141-lpi",         "56-lpi",
                                 "60-lpi",         "107-lpi-normal",  "107-lpi-light",
                                 "107-lpi-dark",   "151-lpi",         "42-lpi",
                                 "125-lpi",        "156-lpi",         "54-lpi",
                                 "85-lpi-normal",  "85-lpi-light",    "85-lpi-dark",
                                 "106-lpi-normal", "106-lpi-light",   "106-lpi-dark",
                                 "120-lpi-normal", "120-lpi-light",   "120-lpi-dark",
                                 "125-lpi-normal", "125-lpi-light",   "125-lpi-dark",
                                 "134-lpi-normal", "134-lpi-light",   "134-lpi-dark",
                                 nullptr,          nullptr,           nullptr,
                                 "150-lpi"};

const char* const kMediaTypeKeyword[] = {"stationery", "transparency", "tab-stock", "pre-cut-tabs", "full-cut-tabs",
                                         "labels",     nullptr,        nullptr,     "envelope",     nullptr,
                                         nullptr,      "other",        "bond"};
const char* const kMediaColorKeyword[] = {"no-color", "white",     "pink", "yellow", "blue", "green",
                                          "buff",     "goldenrod", "red",  "ivory",  "gray", "orange"};
const char* const kPrePrinted[] = {"blank", "pre-printed", "letter-head"};
const char* const kCoating[] = {nullptr, "glossy", "high-gloss", "semi-gloss", "satin", "matte"};
const char* const kTooth[] = {nullptr, "fine", "medium", "coarse"};
const char* const kGrain[] = {nullptr, "y-grain", "x-grain"};
const char* const kCoverType[] = {nullptr, "print-none", "print-front", "print-back", "print-both"};

const char* const kRGBSource[] = {nullptr, "tcc-mode-rgb", "tcc-mode-rgb-gamma1", "Smpte-240m", "sRGB",
                                  nullptr, "Adobe RGB"};
const char* const kCMYKSource[] = {nullptr,
                                   "native-cmyk",
                                   "swop",
                                   nullptr,
                                   "FOGRA Gloss Coated CMYK",
                                   "FOGRA Matte Coated CMYK",
                                   "FOGRA Uncoated CMYK",
                                   "Japan Color 2001 Plus CMYK",
                                   "Japan Color 2001 (Type1:Art) CMYK",
                                   "Japan Color 2001 (Type2:Matte) CMYK",
                                   "Japan Color 2001 (Type3:Coated) CMYK",
                                   "Japan Color 2001 (Type4:Uncoated) CMYK",
                                   "FOGRA Web Offset CMYK",
                                   "FOGRA Plus CMYK",
                                   "Commercial CMYK",
                                   "Swop Plus CMYK"};

const char* const kSaveFormat[] = {"application/X-single-page-tiff", "application/X-multi-page-tiff", "application/pdf",
                                   "application/X-fast-reprint", "application/X-fast-reprint-and-dri"};

const char* const kHighlightColor[] = {nullptr,  "red",    "green", "blue",  "cyan", "magenta", "yellow",
                                       "orange", "violet", "pink",  "brown", "gray", "black"};
const char* const kHighlightMap[] = {nullptr, "none", "single-color", "all-non-black", "all-colors", "hue-match"};
const char* const kHighlightMismatch[] = {nullptr, "ignore", "hold-job", "cancel-job"};

} // namespace

const char* TPifHighlightColorKeyword(int32_t index) { return pick(kHighlightColor, index); }
const char* TPifHighlightMapKeyword(int32_t index) { return pick(kHighlightMap, index); }
const char* TPifHighlightMismatchKeyword(int32_t index) { return pick(kHighlightMismatch, index); }

int WriteTPifHeader(const writeData* sink, int dtdIndex)
{
    Line line;
    line.add("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    if (dtdIndex >= 0 && dtdIndex <= 5)
        line.add("<!DOCTYPE tpif SYSTEM \"tpif-v0202%d.dtd\">\n", dtdIndex);
    line.add("<tpif version=\"1.0\" xml:lang=\"en-US\" cpss-version=\"2.01\">\n");
    line.send(sink);
    return 0;
}

int WriteTPifJobAttribStart(const writeData* sink)
{
    sendText(sink, "\t<job-template-attributes>\n");
    return 0;
}

int WriteTPifJobAttribEnd(const writeData* sink)
{
    sendText(sink, "\t</job-template-attributes>\n");
    return 0;
}

int WriteTPifTrailer(const writeData* sink)
{
    sendText(sink, "</tpif>");
    return 0;
}

int WriteTPifCommands(const writeData* sink, int command, int32_t value)
{
    std::fputs("DEBUG: in WriteTPifCommands funcion \n", TPifDiagStream());
    Line line;
    switch (command) {
    case 0:
        line.add("\t\t<copies syntax=\"integer\">%d</copies>\n", value);
        break;
    case 1:
        keywordElement(sink, "sheet-collate", value == 1 ? "collated" : "uncollated");
        return 0;
    case 2: {
        static const char* const sides[] = {"one-sided", "two-sided-long-edge", "two-sided-short-edge"};
        keywordElement(sink, "sides", pick(sides, value));
        return 0;
    }
    case 3:
        if (value >= 0 && value <= 3)
            line.add("\t\t<orientation-requested syntax=\"enum\">%d</orientation-requested>\n", value + 3);
        break;
    case 4:
        keywordElement(sink, "output-bin", pick(kOutputBin, value));
        return 0;
    case 5:
        line.add("\t\t<adjust-bw-darkness-value syntax=\"integer\">%d</adjust-bw-darkness-value>\n", value);
        break;
    case 6: {
        static const char* const saver[] = {"none", "standard"};
        keywordElement(sink, "toner-saver", pick(saver, value));
        return 0;
    }
    case 7: {
        static const char* const offsets[] = {"none", "offset-set", "offset-subset", nullptr, "offset-job"};
        line.add("\t\t<job-offset syntax=\"1setOf\">\n");
        if (value == 3)
            line.add("\t\t\t<value syntax=\"keyword\">offset-set</value>\n"
                     "\t\t\t<value syntax=\"keyword\">offset-subset</value>\n");
        else if (const char* kw = pick(offsets, value))
            line.add("\t\t\t<value syntax=\"keyword\">%s</value>\n", kw);
        line.add("\t\t</job-offset>\n");
        break;
    }
    case 8:
        line.add("\t\t<pages-per-subset syntax=\"1setOf\">\n\t\t\t<value syntax=\"integer\">%d</value>\n"
                 "\t\t</pages-per-subset>\n",
                 value);
        break;
    case 9: {
        static const char* const modes[] = {nullptr, nullptr, "normal", "dravik180-adjustable"};
        keywordElement(sink, "adjust-bw-darkness-mode", pick(modes, value));
        return 0;
    }
    case 10: {
        static const char* const rotation[] = {"rotate-180", "rotate-0"};
        keywordElement(sink, "page-rotation", pick(rotation, value));
        return 0;
    }
    case 11:
        line.add("\t\t<separator-sheets syntax=\"collection\">\n"
                 "\t\t\t<separator-sheets-type syntax=\"keyword\">slip-sheets</separator-sheets-type>\n"
                 "\t\t</separator-sheets>\n");
        break;
    case 12: {
        static const char* const opi[] = {"insert", "do-not-insert"};
        keywordElement(sink, "opi-image-insertion", pick(opi, value));
        return 0;
    }
    case 13: {
        static const char* const prescan[] = {"no-pre-scan", "pre-scan", "pre-scan-and-gather"};
        keywordElement(sink, "opi-image-pre-scan", pick(prescan, value));
        return 0;
    }
    case 14: {
        static const char* const aa[] = {nullptr, "none", "standard"};
        keywordElement(sink, "anti-aliasing", pick(aa, value));
        return 0;
    }
    case 16:
    case 17:
    case 18:
    case 19:
    case 20:
    case 21: {
        const char* name = kAdjustNames[command - 16];
        line.add("\t\t<%s syntax =\"integer\">%d</%s>\n", name, value, name);
        break;
    }
    case 22: {
        static const char* const trapping[] = {nullptr, "all", "off"};
        keywordElement(sink, "trapping", pick(trapping, value));
        return 0;
    }
    case 23:
        line.add("\t\t<trap-width-fast syntax=\"integer\">%d</trap-width-fast>\n", value);
        break;
    case 24:
        line.add("\t\t<trap-width-slow syntax=\"integer\">%d</trap-width-slow>\n", value);
        break;
    case 25: {
        static const char* const overprint[] = {nullptr, "black-overprint-on", "black-overprint-off"};
        keywordElement(sink, "black-overprint", pick(overprint, value));
        return 0;
    }
    case 26:
    case 27:
    case 28:
        keywordElement(sink, kRenderingNames[command - 26], pick(kRenderingIntent, value));
        return 0;
    case 29:
        keywordElement(sink, "page-delivery", pick(kPageDelivery, value));
        return 0;
    case 30: {
        static const char* const effects[] = {nullptr, "monochrome-grayscale", "color"};
        keywordElement(sink, "color-effects-type", pick(effects, value));
        return 0;
    }
    default: // 15, 31 and above, negative: nothing at all
        return 0;
    }
    line.send(sink);
    return 0;
}

int WriteTPifFinishing(const writeData* sink, const FinishingData& f)
{
    Line line;
    // The finishing writer hands over the line without a length, relying on the terminator.
    auto send = [&] { sink->write(sink->cookie, line.c_str(), 0); };
    if (f.templateName) {
        line.add("\t\t<finishings-col syntax=\"collection\">\n");
        send();
        line.clear();
        nameElement(line, "\t\t\t", "finishing-template", *f.templateName);
        send();
        line.clear();
        line.add("\t\t</finishings-col>\n");
        send();
        return 0;
    }
    if (f.staple == kTPifUnset && f.fold == kTPifUnset && f.holePunch == kTPifUnset)
        return 0;
    diag("DEBUG: WriteTPifFinishing: nStapleOptions = %d, nFoldOptions = %d, nHolePunchOptions = %d, "
         "nHolePunchNumHoles = %d\n",
         f.staple, f.fold, f.holePunch, f.holeCount);
    line.add("\t\t<finishings syntax=\"1setOf\">\n");
    send();

    // A value outside its list leaves the buffer as it stands, so the previous line goes out
    // again: kept deliberately, printers in the field were tuned against it.
    auto value = [&](int32_t enumValue) {
        if (enumValue >= 0) {
            line.clear();
            line.add("\t\t\t<value syntax=\"enum\">%d</value>\n", enumValue);
        }
        send();
    };
    if (f.staple != kTPifUnset) {
        int32_t v = -1;
        switch (f.staple) {
        case 0:
            v = 20;
            break;
        case 1:
            v = 22;
            break;
        case 2:
            v = 21;
            break;
        case 3:
            v = 28;
            break;
        case 4:
            v = 29;
            break;
        case 5:
            v = 31;
            break;
        case 6:
            v = 30;
            break;
        case 7:
            v = 110;
            break;
        case 16:
            v = 32;
            break;
        case 17:
            v = 33;
            break;
        case 18:
            v = 35;
            break;
        case 19:
            v = 34;
            break;
        case 20:
            v = 23;
            break;
        default:
            break;
        }
        value(v);
    }
    if (f.fold != kTPifUnset) {
        int32_t v = -1;
        switch (f.fold) {
        case 9:
            v = 3;
            break;
        case 10:
            v = 111;
            break;
        case 11:
            v = 1000;
            break;
        case 12:
            v = 1001;
            break;
        case 13:
            v = 50;
            break;
        case 14:
            v = 52;
            break;
        case 15:
            v = 13;
            break;
        case 21:
            v = 1003;
            break;
        case 22:
            v = 1004;
            break;
        case 23:
            v = 111;
            break;
        case 24:
            v = 110;
            break;
        case 25:
            v = 1011;
            break;
        case 26:
            v = 1008;
            break;
        case 27:
            v = 1000;
            break;
        case 28:
            v = 1005;
            break;
        case 29:
            v = 1001;
            break;
        case 30:
            v = 1012;
            break;
        default:
            break;
        }
        value(v);
    }
    if (f.holePunch != kTPifUnset) {
        int32_t v = -1;
        switch (f.holePunch) {
        case 31:
            v = 93;
            break;
        case 32:
            v = 94;
            break;
        case 33:
            v = 96;
            break;
        case 34:
            v = 95;
            break;
        default:
            break;
        }
        value(v);
        int32_t count = -1;
        switch (f.holeCount) {
        case 35:
            count = 90;
            break;
        case 36:
            count = 91;
            break;
        case 37:
            count = 92;
            break;
        default:
            break;
        }
        line.clear();
        if (count >= 0)
            line.add("\t\t\t<value syntax=\"enum\">%d</value>\n", count);
        send();
    }
    line.clear();
    line.add("\t\t</finishings>\n");
    send();
    return 0;
}

int WriteTPifJobNotes(const writeData* sink, const std::optional<std::string>& message,
                      const std::optional<std::string>& recipient, const std::optional<std::string>& sheetMessage,
                      const std::optional<std::string>& additionalInfo)
{
    // Notes are free texts of any length: opening tag, text and closing tag go out as separate
    // texts, so no line buffer limits them.
    auto note = [&](const std::optional<std::string>& text, const char* open, const char* close) {
        if (!text)
            return;
        sendText(sink, open);
        sink->write(sink->cookie, text->c_str(), text->size());
        sendText(sink, close);
    };
    note(message, "\t\t<job-message-to-operator syntax=\"text\" xml:space=\"preserve\">",
         "</job-message-to-operator>\n");
    if (recipient) {
        Line line;
        nameElement(line, "\t\t", "job-recipient-name", *recipient);
        line.send(sink);
    }
    note(sheetMessage, "\t\t<job-sheet-message syntax=\"text\" xml:space=\"preserve\">", "</job-sheet-message>\n");
    note(additionalInfo, "\t\t<job-accounting-data syntax=\"text\" xml:space=\"preserve\">",
         "</job-accounting-data>\n");
    return 0;
}

int WriteTPifResolution(const writeData* sink, const ResolutionData& r)
{
    Line line;
    line.add("\t\t<printer-resolution syntax=\"resolution\">\n"
             "\t\t\t<cross-feed syntax=\"integer\">%d</cross-feed>\n"
             "\t\t\t<feed-direction syntax=\"integer\">%d</feed-direction>\n"
             "\t\t\t<units syntax=\"integer\">%d</units>\n\t\t</printer-resolution>\n",
             r.crossFeed, r.feedDirection, r.units);
    line.send(sink);
    return 0;
}

int WriteTPifSpecialPagesStart(const writeData* sink, int kind)
{
    if (kind == 0)
        sendText(sink, "\t\t<page-overrides syntax=\"1setOf\">\n");
    else if (kind == 1)
        sendText(sink, "\t\t<insert-sheet syntax=\"1setOf\">\n");
    return 0;
}

int WriteTPifSpecialPagesEnd(const writeData* sink, int kind)
{
    if (kind == 0)
        sendText(sink, "\t\t</page-overrides>\n");
    else if (kind == 1)
        sendText(sink, "\t\t</insert-sheet>\n");
    return 0;
}

int WriteTPifMedia(const writeData* sink, const MediaData& m)
{
    Line line;
    if (m.source != kTPifUnset) {
        if (m.source == 0)
            line.add("\t\t<media syntax=\"keyword\">post-fuser-inserter</media>\n");
        line.send(sink);
        return 0;
    }
    if (m.mediaKey) {
        line.add("\t\t<media-col syntax=\"collection\">\n");
        line.send(sink);
        line.clear();
        nameElement(line, "\t\t\t", "media-key", *m.mediaKey);
        line.send(sink);
        sendText(sink, "\t\t</media-col>\n");
        return 0;
    }
    sendText(sink, "\t\t<media-col syntax=\"collection\">\n");
    // An unfilled record (type and colour unset) writes neither a type nor a colour line.
    if (m.type == 6) {
        if (const char* kw = pick(kPrePrinted, m.prePrinted))
            line.add("\t\t\t<media-pre-printed syntax=\"keyword\">%s</media-pre-printed>\n", kw);
    } else if (m.type == 7) {
        line.add("\t\t\t<media-recycled syntax=\"keyword\">standard</media-recycled>\n");
    } else if (m.type == 9 || m.type == 10) {
        nameElement(line, "\t\t\t", "media-type", m.customTypeName.value_or(""));
    } else if (const char* kw = pick(kMediaTypeKeyword, m.type)) {
        line.add("\t\t\t<media-type syntax=\"keyword\">%s</media-type>\n", kw);
    }
    if (line.size()) {
        line.send(sink);
        line.clear();
    }
    if ((m.type == 2 || m.type == 3 || m.type == 9 || m.type == 10) && m.orderCount != 0)
        line.add("\t\t\t<media-order-count syntax=\"integer\">%d</media-order-count>\n", m.orderCount);
    if (m.weight != kTPifUnset)
        line.add("\t\t\t<media-weight-metric syntax=\"integer\">%d</media-weight-metric>\n", m.weight);
    if (line.size()) {
        line.send(sink);
        line.clear();
    }
    if (m.description) {
        nameElement(line, "\t\t\t", "media-description", *m.description);
        line.send(sink);
        line.clear();
    }
    if (m.holeCount != kTPifUnset)
        line.add("\t\t\t<media-hole-count syntax=\"integer\">%d</media-hole-count>\n", m.holeCount);
    if (m.color == 12)
        nameElement(line, "\t\t\t", "media-color", m.customColorName.value_or(""));
    else if (const char* kw = pick(kMediaColorKeyword, m.color))
        line.add("\t\t\t<media-color syntax=\"keyword\">%s</media-color>\n", kw);
    if (line.size()) {
        line.send(sink);
        line.clear();
    }
    if (m.width != 0 && m.length != 0)
        line.add("\t\t\t<media-size syntax=\"collection\">\n"
                 "\t\t\t\t<x-dimension syntax=\"integer\">%u</x-dimension>\n"
                 "\t\t\t\t<y-dimension syntax=\"integer\">%u</y-dimension>\n"
                 "\t\t\t</media-size>\n",
                 m.width, m.length);
    if (m.coatedSides != kTPifUnset) {
        const char* type = pick(kCoating, m.coatingType);
        const char* front = nullptr;
        const char* back = nullptr;
        switch (m.coatedSides) {
        case 1:
            front = back = "none";
            break;
        case 2:
            front = type, back = "none";
            break;
        case 3:
            front = back = type;
            break;
        case 4:
            front = "none", back = type;
            break;
        default:
            break;
        }
        if (front)
            line.add("\t\t\t<media-front-coating syntax=\"keyword\">%s</media-front-coating>\n", front);
        if (back)
            line.add("\t\t\t<media-back-coating syntax=\"keyword\">%s</media-back-coating>\n", back);
    }
    if (const char* kw = pick(kTooth, m.tooth))
        line.add("\t\t\t<media-tooth syntax=\"keyword\">%s</media-tooth>\n", kw);
    if (const char* kw = pick(kGrain, m.grain))
        line.add("\t\t\t<media-grain syntax=\"keyword\">%s</media-grain>\n", kw);
    line.add("\t\t</media-col>\n");
    line.send(sink);
    return 0;
}

int WriteTPifCovers(const writeData* sink, int which, int32_t coverType, const MediaData& media)
{
    const char* name = which == 0 ? "cover-front" : "cover-back";
    const char* kw = pick(kCoverType, coverType);
    Line line;
    line.add("\t\t<%s syntax=\"collection\">\n\t\t\t<cover-type syntax=\"keyword\">%s</cover-type>\n", name,
             kw ? kw : "no-cover");
    line.send(sink);
    WriteTPifMedia(sink, media);
    line.clear();
    line.add("\t\t</%s>\n", name);
    line.send(sink);
    return 0;
}

int WriteTPifInserts(const writeData* sink, int32_t afterPage, int32_t count, const MediaData& media)
{
    Line line;
    line.add("\t\t\t<value syntax=\"collection\">\n"
             "\t\t\t<insert-after-page-number syntax=\"integer\">%d</insert-after-page-number>\n"
             "\t\t\t<insert-count syntax=\"integer\">%d</insert-count>\n",
             afterPage, count);
    line.send(sink);
    WriteTPifMedia(sink, media);
    sendText(sink, "\t\t\t</value>\n");
    return 0;
}

int WriteTPifHalfTone(const writeData* sink, int32_t index)
{
    const char* kw = pick(kHalftone, index);
    if (!kw)
        return 0;
    Line line;
    line.add("\t\t<halftone-graphics syntax=\"keyword\">%s</halftone-graphics>\n"
             "\t\t<halftone-images syntax=\"keyword\">%s</halftone-images>\n"
             "\t\t<halftone-text syntax=\"keyword\">%s</halftone-text>\n",
             kw, kw, kw);
    line.send(sink);
    return 0;
}

int WriteTPifTRC(const writeData* sink, std::string_view name)
{
    Line line;
    nameElement(line, "\t\t\t", "trc-name", name);
    sendText(sink, "\t\t<trc syntax=\"collection\">\n");
    line.send(sink);
    sendText(sink, "\t\t</trc>\n");
    return 0;
}

namespace {

void sourceElement(const writeData* sink, const char* elementName, const char* keyword, bool nameSyntax)
{
    Line line;
    if (keyword && nameSyntax)
        nameElement(line, "\t\t", elementName, keyword);
    else if (keyword)
        line.add("\t\t<%s syntax=\"keyword\">%s</%s>\n", elementName, keyword, elementName);
    line.send(sink);
}

} // namespace

int WriteTPifRGBSource(const writeData* sink, int32_t index, const char* elementName,
                       const std::optional<std::string>& customName)
{
    if (customName)
        sourceElement(sink, elementName, customName->c_str(), true);
    else
        sourceElement(sink, elementName, pick(kRGBSource, index), index == 6);
    return 0;
}

int WriteTPifCMYKSource(const writeData* sink, int32_t index, const char* elementName,
                        const std::optional<std::string>& customName)
{
    if (customName)
        sourceElement(sink, elementName, customName->c_str(), true);
    else
        sourceElement(sink, elementName, pick(kCMYKSource, index), false);
    return 0;
}

int WriteTPifGraySource(const writeData* sink, const char* elementName, std::string_view name)
{
    Line line;
    nameElement(line, "\t\t", elementName, name);
    line.send(sink);
    return 0;
}

int WriteTPifColorDestination(const writeData* sink, int32_t /*index*/, const char* elementName,
                              const std::optional<std::string>& customName)
{
    Line line;
    if (customName)
        nameElement(line, "\t\t", elementName, *customName);
    else // no line feed: the next element follows on the same line
        line.add("\t\t<%s syntax=\"keyword\">system-specified</%s>", elementName, elementName);
    line.send(sink);
    return 0;
}

int WriteTPifFullColor(const writeData* sink, const PageData& p)
{
    const int32_t adjust[] = {p.lightness, p.contrast, p.saturation, p.cyanRed, p.magentaGreen, p.yellowBlue};
    for (int i = 0; i < 6; ++i)
        if (adjust[i] != kTPifColorUnset)
            WriteTPifCommands(sink, 16 + i, adjust[i]);
    if (p.trapping != kTPifColorUnset)
        WriteTPifCommands(sink, 22, p.trapping);
    if (p.trapWidthFast != kTPifColorUnset)
        WriteTPifCommands(sink, 23, p.trapWidthFast);
    if (p.trapWidthSlow != kTPifColorUnset)
        WriteTPifCommands(sink, 24, p.trapWidthSlow);
    if (p.blackOverprint != kTPifColorUnset)
        WriteTPifCommands(sink, 25, p.blackOverprint);
    if (p.trc)
        WriteTPifTRC(sink, *p.trc);
    if (p.rgbImages != kTPifColorUnset || p.rgbImagesName)
        WriteTPifRGBSource(sink, p.rgbImages, "undefined-source-rgb-images", p.rgbImagesName);
    if (p.rgbTextGraphics != kTPifColorUnset || p.rgbTextGraphicsName) {
        WriteTPifRGBSource(sink, p.rgbTextGraphics, "undefined-source-rgb-text", p.rgbTextGraphicsName);
        WriteTPifRGBSource(sink, p.rgbTextGraphics, "undefined-source-rgb-graphics", p.rgbTextGraphicsName);
    }
    if (p.cmykImages != kTPifColorUnset || p.cmykImagesName)
        WriteTPifCMYKSource(sink, p.cmykImages, "undefined-source-cmyk-images", p.cmykImagesName);
    if (p.cmykTextGraphics != kTPifColorUnset || p.cmykTextGraphicsName) {
        WriteTPifCMYKSource(sink, p.cmykTextGraphics, "undefined-source-cmyk-text", p.cmykTextGraphicsName);
        WriteTPifCMYKSource(sink, p.cmykTextGraphics, "undefined-source-cmyk-graphics", p.cmykTextGraphicsName);
    }
    if (p.grayImagesName)
        WriteTPifGraySource(sink, "undefined-source-gray-images", *p.grayImagesName);
    if (p.grayTextGraphicsName) {
        WriteTPifGraySource(sink, "undefined-source-gray-text", *p.grayTextGraphicsName);
        WriteTPifGraySource(sink, "undefined-source-gray-graphics", *p.grayTextGraphicsName);
    }
    if (p.destination != kTPifColorUnset || p.destinationName) {
        WriteTPifColorDestination(sink, p.destination, "color-destination-profile-front", p.destinationName);
        WriteTPifColorDestination(sink, p.destination, "color-destination-profile-back", p.destinationName);
    }
    const int32_t rendering[] = {p.renderImages, p.renderText, p.renderGraphics};
    for (int i = 0; i < 3; ++i)
        if (rendering[i] != kTPifColorUnset)
            WriteTPifCommands(sink, 26 + i, rendering[i]);
    if (p.antialiasing != kTPifColorUnset)
        WriteTPifCommands(sink, 14, p.antialiasing);
    if (p.halftone != kTPifColorUnset)
        WriteTPifHalfTone(sink, p.halftone);
    if (p.colorEffects != kTPifColorUnset)
        WriteTPifCommands(sink, 30, p.colorEffects);
    return 0;
}

int WriteTPifPageExceptions(const writeData* sink, const PageData& p, const MediaData& media)
{
    Line line;
    line.add("\t\t\t<value syntax=\"collection\">\n"
             "\t\t\t<input-documents syntax=\"1setOf\">\n\t\t\t\t<value syntax=\"rangeOfInteger\">\n"
             "\t\t\t\t\t<lower-bound syntax=\"integer\">%d</lower-bound>\n"
             "\t\t\t\t\t<upper-bound syntax=\"integer\">%d</upper-bound>\n\t\t\t\t</value>\n"
             "\t\t\t</input-documents>\n",
             p.docLower, p.docUpper);
    line.add("\t\t\t<pages syntax=\"1setOf\">\n\t\t\t\t<value syntax=\"rangeOfInteger\">\n"
             "\t\t\t\t\t<lower-bound syntax=\"integer\">%d</lower-bound>\n"
             "\t\t\t\t\t<upper-bound syntax=\"integer\">%d</upper-bound>\n\t\t\t\t</value>\n"
             "\t\t\t</pages>\n",
             p.lower, p.upper);
    line.send(sink);
    if (p.sides != kTPifUnset)
        WriteTPifCommands(sink, 2, p.sides);
    if (p.hasLightenDarken)
        WriteTPifCommands(sink, 5, p.lightenDarken);
    if (p.hasImageShift) {
        line.clear();
        line.add("\t\t\t<x-side1-image-shift syntax=\"integer\">%ld</x-side1-image-shift>\n"
                 "\t\t\t<x-side2-image-shift syntax=\"integer\">%ld</x-side2-image-shift>\n"
                 "\t\t\t<y-side1-image-shift syntax=\"integer\">%ld</y-side1-image-shift>\n"
                 "\t\t\t<y-side2-image-shift syntax=\"integer\">%ld</y-side2-image-shift>\n",
                 p.xSide1, p.xSide2, p.ySide1, p.ySide2);
        line.send(sink);
    }
    WriteTPifMedia(sink, media);
    WriteTPifFullColor(sink, p);
    sendText(sink, "\t\t\t</value>\n");
    return 0;
}

int WriteTPifImageShift(const writeData* sink, long xSide1, long xSide2, long ySide1, long ySide2)
{
    Line line;
    line.add("\t\t<x-side1-image-shift syntax=\"integer\">%ld</x-side1-image-shift>\n"
             "\t\t<x-side2-image-shift syntax=\"integer\">%ld</x-side2-image-shift>\n"
             "\t\t<y-side1-image-shift syntax=\"integer\">%ld</y-side1-image-shift>\n"
             "\t\t<y-side2-image-shift syntax=\"integer\">%ld</y-side2-image-shift>\n",
             xSide1, xSide2, ySide1, ySide2);
    line.send(sink);
    return 0;
}

int WriteTPifJobTypes(const writeData* sink, const JobData& job)
{
    // A held job (1) and a background form job (4) have no collection around them, so the hold
    // line stands bare among the job attributes; kept as the printers expect it.
    const bool collection = job.disposition != 1 && job.disposition != 4;
    if (collection)
        sendText(sink, "\t\t<job-save-disposition syntax=\"collection\">\n");
    switch (job.disposition) {
    case 0:
        sendText(sink, "\t\t\t<save-disposition syntax=\"keyword\">none</save-disposition>\n");
        break;
    case 1:
        sendText(sink, "\t\t\t<job-hold-until syntax=\"keyword\">indefinite</job-hold-until>\n");
        break;
    case 2:
    case 3: {
        Line line;
        line.add("\t\t\t<save-disposition syntax=\"keyword\">%s</save-disposition>\n",
                 job.disposition == 2 ? "save-only" : "print-save");
        line.add("\t\t\t<save-info syntax=\"1setOf\">\n\t\t\t\t<value syntax=\"collection\">\n");
        line.send(sink);
        line.clear();
        line.text("\t\t\t\t\t<save-location syntax=\"uri\">", job.saveLocation, "</save-location>\n");
        line.send(sink);
        line.clear();
        nameElement(line, "\t\t\t\t\t", "save-name", job.saveName);
        line.send(sink);
        line.clear();
        if (const char* format = pick(kSaveFormat, job.saveFormat))
            line.add("\t\t\t\t\t<save-document-format syntax=\"mimeMediaType\">%s</save-document-format>\n", format);
        line.add("\t\t\t\t</value>\n\t\t\t</save-info>\n");
        line.send(sink);
        break;
    }
    default:
        break;
    }
    if (collection)
        sendText(sink, "\t\t</job-save-disposition>\n");
    return 0;
}

int WriteTPifOpAttrib(const writeData* sink, std::string_view jobName, std::string_view userName)
{
    sendText(sink, "\t<tpif-operation-attributes>\n");
    Line line;
    nameElement(line, "\t\t", "job-name", jobName);
    line.send(sink);
    line.clear();
    nameElement(line, "\t\t", "requesting-user-name", userName);
    line.send(sink);
    sendText(sink, "\t\t<document-format syntax=\"mimeMediaType\">application/postscript</document-format>\n"
                   "\t</tpif-operation-attributes>\n");
    return 0;
}

namespace {

void customColor(const writeData* sink, const char* name, const char* customName, const HighlightColorData::Custom& c)
{
    Line line;
    line.add("\t\t<%s syntax=\"name\" xml:space=\"preserve\">talmo-custom-color-%d</%s>\n", name, c.slot, name);
    line.add("\t\t<%s syntax=\"collection\">\n", customName);
    if (c.hasRGB)
        line.add("\t\t\t<color-srgb-col syntax=\"collection\">\n"
                 "\t\t\t\t<color-srgb-red syntax=\"integer\">%d</color-srgb-red>\n"
                 "\t\t\t\t<color-srgb-green syntax=\"integer\">%d</color-srgb-green>\n"
                 "\t\t\t\t<color-srgb-blue syntax=\"integer\">%d</color-srgb-blue>\n"
                 "\t\t\t</color-srgb-col>\n",
                 c.r, c.g, c.b);
    if (c.hasHSV)
        line.add("\t\t\t<color-hsv-col syntax=\"collection\">\n"
                 "\t\t\t\t<color-hsv-hue syntax=\"integer\">%d</color-hsv-hue>\n"
                 "\t\t\t\t<color-hsv-saturation syntax=\"integer\">%d</color-hsv-saturation>\n"
                 "\t\t\t\t<color-hsv-value syntax=\"integer\">%d</color-hsv-value>\n"
                 "\t\t\t</color-hsv-col>\n",
                 c.h, c.s, c.v);
    line.add("\t\t</%s>\n", customName);
    line.send(sink);
}

} // namespace

int WriteTPifHLC(const writeData* sink, const HighlightColorData& h)
{
    if (h.colorantCustom.present)
        customColor(sink, "highlight-colorant-color", "highlight-colorant-color-custom-col", h.colorantCustom);
    else if (const char* kw = TPifHighlightColorKeyword(h.colorant))
        keywordElement(sink, "highlight-colorant", kw);
    if (h.mapColorCustom.present)
        customColor(sink, "highlight-map-color", "highlight-map-color-custom-col", h.mapColorCustom);
    else if (const char* kw = TPifHighlightColorKeyword(h.mapColor))
        keywordElement(sink, "highlight-map-color", kw);
    if (const char* kw = TPifHighlightMapKeyword(h.map))
        keywordElement(sink, "highlight-map", kw);
    if (const char* kw = TPifHighlightMismatchKeyword(h.mismatch))
        keywordElement(sink, "highlight-colorant-mismatch", kw);
    return 0;
}

int WriteTPifBackgroundForms(const writeData* sink, const BgFormsData& forms)
{
    Line line;
    if (!forms.useExisting) {
        sendText(sink, "\t\t<form-save syntax=\"collection\">\n"
                       "\t\t\t<form-save-disposition syntax=\"keyword\">save-only</form-save-disposition>\n"
                       "\t\t\t<form-save-info syntax=\"1setOf\">\n"
                       "\t\t\t\t<value syntax=\"collection\">\n"
                       "\t\t\t\t\t<form-save-location syntax=\"uri\">file:///form-repository/</form-save-location>\n");
        nameElement(line, "\t\t\t\t\t", "form-save-name", forms.formName);
        line.send(sink);
        sendText(sink, "\t\t\t\t\t<form-save-format syntax=\"mimeMediaType\">application/X-single-page-tiff"
                       "</form-save-format>\n"
                       "\t\t\t\t</value>\n"
                       "\t\t\t</form-save-info>\n"
                       "\t\t</form-save>\n");
        return 0;
    }
    sendText(sink, "\t\t<forms-col syntax=\"1setOf\">\n\t\t\t<value syntax=\"collection\">\n");
    nameElement(line, "\t\t\t\t", "form-name", forms.formName);
    line.send(sink);
    line.clear();
    line.add("\t\t\t\t<form-cycle-start syntax=\"integer\">%d</form-cycle-start>\n"
             "\t\t\t\t<forms-x-image-shift syntax=\"integer\">%ld</forms-x-image-shift>\n"
             "\t\t\t\t<forms-y-image-shift syntax=\"integer\">%ld</forms-y-image-shift>\n",
             forms.cycleStart, forms.xShift, forms.yShift);
    line.send(sink);
    sendText(sink, "\t\t\t</value>\n\t\t</forms-col>\n");
    return 0;
}

int WriteTPifAccounting(const writeData* sink, std::string_view userId, std::string_view accountId)
{
    Line line;
    nameElement(line, "\t\t", "job-accounting-user-id", userId);
    line.send(sink);
    line.clear();
    // The closing tag does not match the opening one; the printers accept exactly this text.
    line.text("\t\t<job-account-id syntax=\"name\" xml:space=\"preserve\">", accountId, "</job-accounting-id>\n");
    line.send(sink);
    return 0;
}

int WriteTPifPageRanges(const writeData* sink, long from, long to)
{
    Line line;
    line.add("\t\t<page-ranges syntax=\"1setOf\">\n\t\t\t<value syntax=\"rangeOfInteger\">\n"
             "\t\t\t\t<lower-bound syntax=\"integer\">%ld</lower-bound>\n"
             "\t\t\t\t<upper-bound syntax=\"integer\">%ld</upper-bound>\n"
             "\t\t\t</value>\n\t\t</page-ranges>\n",
             from, to);
    line.send(sink);
    return 0;
}

} // namespace talmo
