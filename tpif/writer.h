// TPIF ticket layer: reads the settings ticket (key -> value, "com.talmo..." keys) and the record
// dictionaries inside it, fills the plain records of the element layer and calls it.
#pragma once

#include "platform/values.h"
#include "tpif/elements.h"

#include <cstdio>

namespace talmo {

// Writes one whole document to `stream` through DevWriteTpif; nothing at all when the ticket
// holds no "com.talmo.print.TPIFOptions" dictionary or nothing of what it asks for.
void WriteTPIF(FILE* stream, const pl::DictPtr& settingsTicket);
// The same through any sink (tests, benchmarks).
void WriteTPIFToSink(const writeData* sink, const pl::DictPtr& settingsTicket);

// Filling functions. Texts are escaped on the way into the records.
void FillMediaData(MediaData& media, const pl::DictPtr& stock);
void FillJobTypeData(JobData& job, const pl::DictPtr& jobType, const pl::DictPtr& settingsTicket);
void FillImageShift(PageData& page, const pl::DictPtr& imageShift);
void FillFullColorOptions(PageData& page, const pl::DictPtr& colorOptions);
void FillHighlightColorData(HighlightColorData& highlight, const pl::DictPtr& options);

// Image shift and form offsets are written in hundredths of a millimetre. With "FullPrecision"
// true the stored values already are; otherwise they are in the record's own unit: hundredths
// of an inch ("Inches" non-zero or absent, rounded to nearest) or tenths of a millimetre.
long TPifShiftToHundredthsMm(int64_t value, bool inches, bool fullPrecision);

// Dimensions of a standard stock size code in hundredths of a millimetre; false when unknown.
bool TPifStockSizeDimensions(int32_t size, uint32_t& width, uint32_t& length);

// Ticket layer: one writer per feature.
void WriteTPIFJobNameAndUser(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFJobLevelStock(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFFrontCover(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFBackCover(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFInserts(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFExceptions(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFFinishing(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFOffset(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFJobNotes(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFJobType(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFDuplex(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFOutputDestination(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFResolution(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFHighlightColor(const writeData* sink, const pl::DictPtr& options);
void WriteTPIFImageShift(const writeData* sink, const pl::DictPtr& imageShift);
void WriteTPIFFullColor(const writeData* sink, const pl::DictPtr& colorOptions);
void WriteTPIFOPISubsitution(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFOPIPreScan(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFAntiAliasing(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFHalftone(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFLightenDarken(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFTonerSaver(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFOutputOrder(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFPrinterEmulation(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFImageRotation(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFOutputColor(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFBackgroundForms(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFAccounting(const writeData* sink, const pl::DictPtr& ticket);
void WriteTPIFPagesToPrint(const writeData* sink, const pl::DictPtr& ticket);

} // namespace talmo
