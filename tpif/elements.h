// TPIF element layer: plain records and the writers that format fixed element lines from them
// and hand each finished text to the output sink. Nothing here looks at the settings ticket.
//
// Texts held in the records are expected already escaped (XMLCreateStringByEscapingEntities);
// the element layer only fits them into its line buffers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

namespace talmo {

// Output sink. `write` receives each finished piece of text; `text` is always NUL-terminated
// and writers may pass 0 for `length` (the finishing writer does), so a sink must rely on the
// terminator.
struct writeData {
    void* cookie;
    void (*write)(void* cookie, const char* text, size_t length);
};

// The process-wide output stream of DevWriteTpif; WriteTPIF sets it and leaves it set.
extern FILE* tpif_ofp;
// Where the "DEBUG: ..." lines go; null means stderr.
extern FILE* tpif_errfp;
FILE* TPifDiagStream();

// The only sink: fputs of `text` to tpif_ofp; cookie and length are ignored.
void DevWriteTpif(void* cookie, const char* text, size_t length);

// Every element writer formats into a line buffer of this size. A user text that would not fit
// is cut at a character (or entity) boundary so that the line keeps its closing tag.
inline constexpr size_t kTPifLineBufferSize = 1024;

inline constexpr int32_t kTPifUnset = -1;             // "unset" of the media, finishing records
inline constexpr int32_t kTPifColorUnset = INT32_MIN; // "unset" of the page record's colour block

// Media record, filled from a stock dictionary by FillMediaData.
struct MediaData {
    int32_t type = kTPifUnset;  // 0-13
    int32_t color = kTPifUnset; // 0-13
    int32_t orderCount = 0;
    int32_t holeCount = kTPifUnset;
    int32_t prePrinted = 0; // 0 blank, 1 pre-printed, 2 letter-head
    int32_t recycled = 0;   // set when type 7 is written
    std::optional<std::string> customTypeName;
    std::optional<std::string> customColorName;
    std::optional<std::string> description;
    int32_t weight = kTPifUnset;
    uint32_t width = 0; // hundredths of a millimetre
    uint32_t length = 0;
    int32_t tooth = kTPifUnset;       // 1 fine, 2 medium, 3 coarse
    int32_t grain = kTPifUnset;       // 1 y-grain, 2 x-grain
    int32_t coatedSides = kTPifUnset; // 1 none, 2 front, 3 both, 4 back
    int32_t coatingType = kTPifUnset; // 1 glossy ... 5 matte
    std::optional<std::string> mediaKey;
    int32_t source = kTPifUnset; // 0 post-fuser inserter
};
void FinalizeMediaData(MediaData& media);

struct FinishingData {
    int32_t staple = kTPifUnset;
    int32_t fold = kTPifUnset;
    int32_t holePunch = kTPifUnset;
    int32_t holeCount = kTPifUnset;
    std::optional<std::string> templateName;
};

// Page record: an exception page range and, at job level, the colour block.
struct PageData {
    int32_t docLower = 1, docUpper = 1; // input documents, always 1 to 1
    int32_t lower = 1, upper = 1;
    int32_t sides = kTPifUnset; // command 2 value
    bool hasLightenDarken = false;
    int32_t lightenDarken = 0;
    bool hasImageShift = false;
    long xSide1 = 0, xSide2 = 0, ySide1 = 0, ySide2 = 0;

    int32_t lightness = kTPifColorUnset, contrast = kTPifColorUnset, saturation = kTPifColorUnset;
    int32_t cyanRed = kTPifColorUnset, magentaGreen = kTPifColorUnset, yellowBlue = kTPifColorUnset;
    int32_t trapping = kTPifColorUnset, trapWidthFast = kTPifColorUnset, trapWidthSlow = kTPifColorUnset;
    int32_t blackOverprint = kTPifColorUnset;
    std::optional<std::string> trc;
    int32_t rgbImages = kTPifColorUnset;
    std::optional<std::string> rgbImagesName;
    int32_t rgbTextGraphics = kTPifColorUnset;
    std::optional<std::string> rgbTextGraphicsName;
    int32_t cmykImages = kTPifColorUnset;
    std::optional<std::string> cmykImagesName;
    int32_t cmykTextGraphics = kTPifColorUnset;
    std::optional<std::string> cmykTextGraphicsName;
    std::optional<std::string> grayImagesName;
    std::optional<std::string> grayTextGraphicsName;
    int32_t destination = kTPifColorUnset;
    std::optional<std::string> destinationName;
    int32_t renderImages = kTPifColorUnset, renderText = kTPifColorUnset, renderGraphics = kTPifColorUnset;
    int32_t antialiasing = kTPifColorUnset, halftone = kTPifColorUnset, colorEffects = kTPifColorUnset;
};
void FinalizePageData(PageData& page);

// Job type record: disposition 0 none, 1 hold, 2 save-only, 3 print-save, 4 background form.
struct JobData {
    int32_t disposition = 0;
    int32_t saveFormat = kTPifUnset; // 0-4
    std::string saveName;
    std::string saveLocation;
};

// Background forms record: a form save (new form) or a form use (merge with an existing one).
struct BgFormsData {
    bool useExisting = false;
    std::string formName;
    int32_t cycleStart = 0;
    long xShift = 0, yShift = 0; // hundredths of a millimetre
};

struct ResolutionData {
    int32_t crossFeed = 0, feedDirection = 0, units = 3;
};

// Highlight colour: keyword indexes of the four elements and the custom colours.
struct HighlightColorData {
    struct Custom {
        bool present = false;
        int32_t slot = 0; // talmo-custom-color-%d
        bool hasRGB = false, hasHSV = false;
        int32_t r = 0, g = 0, b = 0, h = 0, s = 0, v = 0;
    };
    int32_t colorant = kTPifUnset;
    Custom colorantCustom;
    int32_t mapColor = kTPifUnset;
    Custom mapColorCustom;
    int32_t map = kTPifUnset;
    int32_t mismatch = kTPifUnset;
};

// Keyword lists of the highlight colour elements; null for an index outside the list.
const char* TPifHighlightColorKeyword(int32_t index);
const char* TPifHighlightMapKeyword(int32_t index);
const char* TPifHighlightMismatchKeyword(int32_t index);

// Element layer. Each takes the sink first and returns 0.
int WriteTPifHeader(const writeData* sink, int dtdIndex);
int WriteTPifJobAttribStart(const writeData* sink);
int WriteTPifJobAttribEnd(const writeData* sink);
int WriteTPifTrailer(const writeData* sink);
int WriteTPifCommands(const writeData* sink, int command, int32_t value);
int WriteTPifFinishing(const writeData* sink, const FinishingData& finishing);
int WriteTPifJobNotes(const writeData* sink, const std::optional<std::string>& message,
                      const std::optional<std::string>& recipient, const std::optional<std::string>& sheetMessage,
                      const std::optional<std::string>& additionalInfo);
int WriteTPifResolution(const writeData* sink, const ResolutionData& resolution);
int WriteTPifSpecialPagesStart(const writeData* sink, int kind); // 0 page overrides, 1 inserts
int WriteTPifSpecialPagesEnd(const writeData* sink, int kind);
int WriteTPifPageExceptions(const writeData* sink, const PageData& page, const MediaData& media);
int WriteTPifInserts(const writeData* sink, int32_t afterPage, int32_t count, const MediaData& media);
int WriteTPifCovers(const writeData* sink, int which, int32_t coverType, const MediaData& media);
int WriteTPifMedia(const writeData* sink, const MediaData& media);
int WriteTPifFullColor(const writeData* sink, const PageData& page);
int WriteTPifHalfTone(const writeData* sink, int32_t index);
int WriteTPifImageShift(const writeData* sink, long xSide1, long xSide2, long ySide1, long ySide2);
int WriteTPifJobTypes(const writeData* sink, const JobData& job);
int WriteTPifOpAttrib(const writeData* sink, std::string_view jobName, std::string_view userName);
int WriteTPifTRC(const writeData* sink, std::string_view name);
int WriteTPifRGBSource(const writeData* sink, int32_t index, const char* elementName,
                       const std::optional<std::string>& customName);
int WriteTPifCMYKSource(const writeData* sink, int32_t index, const char* elementName,
                        const std::optional<std::string>& customName);
int WriteTPifGraySource(const writeData* sink, const char* elementName, std::string_view name);
int WriteTPifColorDestination(const writeData* sink, int32_t index, const char* elementName,
                              const std::optional<std::string>& customName);
int WriteTPifHLC(const writeData* sink, const HighlightColorData& highlight);
int WriteTPifBackgroundForms(const writeData* sink, const BgFormsData& forms);
int WriteTPifAccounting(const writeData* sink, std::string_view userId, std::string_view accountId);
int WriteTPifPageRanges(const writeData* sink, long from, long to);

} // namespace talmo
