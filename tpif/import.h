// TPIF import: reads a TPIF document (the writer's format), turns every attribute the device
// profile marks importable into print settings ticket values and merges them into the ticket.
//
// Documents come from outside: they are read with libxml2 without network access, without
// entity substitution, DTD loading or XInclude, within libxml2's default limits, and a document
// that declares any entity is refused as a whole (kImportFileFailed).
#pragma once

#include "platform/status.h"
#include "platform/values.h"

#include <libxml/tree.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace talmo {

class PrintSession;

// ---- keyword maps: profile keyword name <-> ticket value, ended by a row without a name ----

struct _TPIFKeywordMap {
    const char* keyword;
    int32_t value;
};

extern const _TPIFKeywordMap _TPIFColorEffectsMap[];
extern const _TPIFKeywordMap _TPIFSidesMap[];
extern const _TPIFKeywordMap _TPIFOutputDestinationMap[];
extern const _TPIFKeywordMap _TPIFMediaWeightMetricMap[];
extern const _TPIFKeywordMap _TPIFMediaColorMap[];
extern const _TPIFKeywordMap _TPIFMediaTypeMap[];
extern const _TPIFKeywordMap _TPIFMediaGrainMap[];
extern const _TPIFKeywordMap _TPIFMediaFinishMap[];
extern const _TPIFKeywordMap _TPIFMediaCoatingTypeMap[];
extern const _TPIFKeywordMap _TPIFJobTypeMap[];
extern const _TPIFKeywordMap _TPIFSaveFormatMap[];
extern const _TPIFKeywordMap _TPIFSlipSheetMap[];
extern const _TPIFKeywordMap _TPIFHalftoneScreenMap[];
extern const _TPIFKeywordMap _TPIFLightenDarkenMap[];
extern const _TPIFKeywordMap _TPIFAntialiasingMap[];
extern const _TPIFKeywordMap _TPIFRotationMap[];
// Maps of the features whose ticket values the writer alone fixes (the inverse of its tables).
extern const _TPIFKeywordMap _TPIFStapleMap[];        // 5-8 one staple, 10-13 two, 26-29 centre
extern const _TPIFKeywordMap _TPIFFoldMap[];          // 41-48 fold, 38/39 Z-fold edge, 8 booklet staple
extern const _TPIFKeywordMap _TPIFPunchLocationMap[]; // hole punch position 32-35
extern const _TPIFKeywordMap _TPIFPunchCountMap[];    // "com.talmo.print.FinishingHolePunchOptions"
extern const _TPIFKeywordMap _TPIFBindMap[];
extern const _TPIFKeywordMap _TPIFFinishingNoneMap[];
extern const _TPIFKeywordMap _TPIFFinishingSBMMap[];
extern const _TPIFKeywordMap _TPIFResolutionMap[];
extern const _TPIFKeywordMap _TPIFTonerSaverMap[];
extern const _TPIFKeywordMap _TPIFOffsetMap[];
extern const _TPIFKeywordMap _TPIFDravikEmulationMap[];
extern const _TPIFKeywordMap _TPIFOutputOrderMap[];
extern const _TPIFKeywordMap _TPIFOPISubstitutionMap[];
extern const _TPIFKeywordMap _TPIFOPIPrescanMap[];
extern const _TPIFKeywordMap _TPIFHighlightColorMap[];
extern const _TPIFKeywordMap _TPIFHighlightMapMap[];
extern const _TPIFKeywordMap _TPIFHighlightMismatchMap[];
extern const _TPIFKeywordMap _TPIFRenderingIntentMap[];
extern const _TPIFKeywordMap _TPIFDestinationProfileMap[];
extern const _TPIFKeywordMap _TPIFRGBSourceMap[];
extern const _TPIFKeywordMap _TPIFCMYKSourceMap[];
extern const _TPIFKeywordMap _TPIFTrappingMap[];
extern const _TPIFKeywordMap _TPIFBlackOverprintMap[];
extern const _TPIFKeywordMap _TPIFCoverTypeMap[];

inline constexpr int kTPIFValueToKeyword = 1; // direction 1: ticket value (number) -> keyword
inline constexpr int kTPIFKeywordToValue = 2; // direction 2: keyword (string) -> ticket value
// First matching row wins. True and *out set when a row matched; *out untouched otherwise.
bool TPIFConvertKeyword(const _TPIFKeywordMap* map, int direction, const pl::ValuePtr& in, pl::ValuePtr* out);

// ---- nodes ----

inline constexpr std::string_view kTPIFSyntaxKeyword = "Keyword";
inline constexpr std::string_view kTPIFSyntaxNumber = "Number";
inline constexpr std::string_view kTPIFSyntaxName = "Name";
inline constexpr std::string_view kTPIFSyntaxUnknown = "--Unknown--";

// The element reached by the dotted `path` (".media-col.media-size.x-dimension") from `node`
// and its following siblings, depth first; the first match wins, so a repeated element is
// read from a later sibling by starting there. Only subtrees whose path is a prefix of the
// wanted one are entered, so a search costs the siblings on the way, not the whole tree.
xmlNodePtr TPIFImportGetNode(xmlNodePtr node, std::string_view path);
// "Keyword" for keyword, mimeMediaType and enum; "Number" for integer; "Name" for name, uri
// and text; "--Unknown--" otherwise.
std::string_view TPIFImportGetNodeSyntax(xmlNodePtr node);
// The node's value checked against the feature: for Keyword the profile keyword name whose
// "TPIFValue" is the text (a string); for Number an integer within "Minimum".."Maximum"
// (decimals rounded half away from zero); for Name the text when it fits "CharacterSet" and
// "Length" (UTF-16 units). Null when the value does not validate.
pl::ValuePtr TPIFImportNodeValue(xmlNodePtr node, std::string_view syntax, const pl::DictPtr& feature);

// ---- features ----

// JobContext of the entries being imported: 0 the job, 2 covers, 3 inserts, 4 exception pages.
struct _TPIFImportFeatureContext {
    xmlDocPtr document = nullptr;
    xmlNodePtr start = nullptr; // first child of the group or entry being imported
    pl::DictPtr dictionary;     // the imported job ticket, or the entry being built
    int64_t index = 0;          // of the feature being imported
    int64_t count = 0;          // features in the list
    int jobContext = 0;
    pl::ArrayPtr features; // the list, applied again inside page entries
};

void TPIFImportFeature(const pl::DictPtr& feature, _TPIFImportFeatureContext& context);
// One element to one key: `ticketKey` in the destination, or `subKey` of the sub-dictionary
// `dictionaryKey` (created on demand). True when a value (or the default) was stored.
bool TPIFImportFeatureOneToOne(const pl::DictPtr& feature, _TPIFImportFeatureContext& context, std::string_view path,
                               const char* ticketKey, const _TPIFKeywordMap* keywordMap,
                               const char* dictionaryKey = nullptr, const char* subKey = nullptr);

// Recomputes "com.talmo.print.FinishingOptions" from the detail keys present (a value other
// than INT32_MIN).
void ComputeFinishingOptionKey(const pl::DictPtr& dictionary);

// ---- files ----

struct XmlDocFree {
    void operator()(xmlDoc* doc) const { xmlFreeDoc(doc); }
};
using TPIFDocument = std::unique_ptr<xmlDoc, XmlDocFree>;

// Largest file the importer reads.
inline constexpr size_t kTPIFMaxFileSize = 64u << 20;

// Reads and parses a TPIF file; null when it cannot be read, is not a regular file, is larger
// than kTPIFMaxFileSize, is not well-formed, declares an entity or its root is not "tpif".
// `why` (optional) receives a short reason.
TPIFDocument TPIFReadDocument(const std::string& path, std::string* why = nullptr);
TPIFDocument TPIFReadDocumentFromMemory(const char* data, size_t size, std::string* why = nullptr);

// Imports one file into `dictionary`: noErr, kImportFileFailed (-208) when the file cannot be
// parsed (the dictionary is then unchanged; `why`, when given, receives the reason), paramErr
// for a null dictionary.
OSStatus TPIFImportFileAtPath(const std::string& path, const pl::DictPtr& dictionary, std::string* why = nullptr);
// The same over a parsed document.
OSStatus TPIFImportDocument(xmlDocPtr document, const pl::DictPtr& dictionary);

// Imports every file into one new dictionary; `statuses` (optional) gets one status per file.
pl::DictPtr TPIFImportFilesIntoDictionary(const std::vector<std::string>& paths, std::vector<OSStatus>* statuses);
// The dialog's import: the files into one dictionary, merged into the current session's
// ticket. kImportFileFailed when any file failed (the others are still merged), else the
// merge's status.
OSStatus TPIFImportFiles(const std::vector<std::string>& paths);

// Writes every key of `dictionary` into the session's print settings ticket with the setter
// of the value's type and the creator "TALMO", printing each value to stderr, then runs the
// panels' sync. paramErr for a missing dictionary; an empty one does nothing.
OSStatus TPIFImportMergeIntoJobTicket(PrintSession* session, const pl::DictPtr& dictionary);

// The panels' sync (direction 1: ticket into panels, 0: panels into the ticket). Nothing
// until the panel host installs its handler.
using TPIFPDESyncHandler = std::function<void(PrintSession*, int direction)>;
void TPIFSetPDESyncHandler(TPIFPDESyncHandler handler);
void TPIFRunPDESync(PrintSession* session, int direction);

// Custom page size limits in points (minimum width, minimum height, maximum width, maximum
// height) that imported stock sizes are held within. Without a provider of its own the import
// asks GetMediaLimits (the current PPD's limits, else 432, 432, 864, 864).
struct TPIFMediaLimits {
    double minWidth, minHeight, maxWidth, maxHeight;
};
using TPIFMediaLimitsProvider = std::function<TPIFMediaLimits()>;
void TPIFSetMediaLimitsProvider(TPIFMediaLimitsProvider provider);
TPIFMediaLimits TPIFCurrentMediaLimits();

} // namespace talmo
