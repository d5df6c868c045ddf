// The job ticket summary shown before an export and after an import, and the export to a file.
#pragma once

#include "platform/status.h"
#include "platform/values.h"
#include "ticket/summary-labels.h"

#include <string>
#include <vector>

namespace talmo {

class PrintSession;

enum TPIFImportExportMode { kTPIFExportMode = 0, kTPIFImportMode = 1 };

// Texts of the summary dialog (localization keys whose English text is the key itself).
inline constexpr char kTPIFSummaryHeading[] = "Talmo Job Ticket Settings";
inline constexpr char kTPIFSummaryCancelButton[] = "Cancel";
inline constexpr char kTPIFSummaryCopyAllButton[] = "Copy All";
// "Export Talmo Job Ticket" / "Import Talmo Job Ticket".
const char* TPIFSummaryTitle(TPIFImportExportMode mode);
// The default button: "Export..." / "Import".
const char* TPIFSummaryDefaultButton(TPIFImportExportMode mode);

// Appends the summary lines of `ticket` (job notes, job setup, output, image adjustment, image
// quality, colour, highlight colour, special pages; each section ends with " "). Labels and
// values are looked up with `label` ("STRING NOT FOUND" for missing keys is its business).
void buildSummaryText(const pl::DictPtr& ticket, std::vector<std::string>& lines, const LabelLookup& label);
// The same with the extension bundle's "Localizable" table.
void buildSummaryText(const pl::DictPtr& ticket, std::vector<std::string>& lines);

// The platform's I/O failure.
inline constexpr OSStatus kTPIFExportIOErr = -36;

// Syncs the panels into the ticket, then writes the TPIF document of the current session's
// print settings items whose keys begin "com.talmo" to `path`, atomically (a failed write
// leaves any earlier file as it was). With no "com.talmo.print.TPIFOptions" the file is empty.
// kPMNoSession without a current session, paramErr for an empty path, kTPIFExportIOErr when
// the file cannot be written.
OSStatus TPIFExportToFileAtPath(const std::string& path);
OSStatus TPIFExportSessionToFileAtPath(PrintSession* session, const std::string& path);
// The items of a ticket dictionary that the export hands to the writer.
pl::DictPtr TPIFExportItems(const pl::DictPtr& ticket);

} // namespace talmo
