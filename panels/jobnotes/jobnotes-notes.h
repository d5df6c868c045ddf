// The job notes without widgets: what the panel keeps, how it travels to and from the print
// settings ticket, the user's defaults file and the summary lines.
#pragma once

#include "settings/settings.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace talmo::jobnotes {

// The one-row maps of the combo box menus; the row's value only tells a map row from a text.
extern const SettingMap _JobNameMap[];
extern const SettingMap _LoginNameMap[];

struct JobNotesFields {
    bool useJobName = true;            // the document name is the job name
    bool senderUseLoginName = true;    // the login name is the sender
    bool recipientUseLoginName = true; // the login name is the recipient
    std::string jobName;
    std::string senderName;
    std::string recipient;
    std::string message;
    std::string sheetMessage;
};

// A combo box's value as the panel sees it: a text typed or picked, or nullopt when a map row
// is chosen or the field is empty. A text replaces `text` and clears the flag; nullopt sets it.
void ApplyComboValue(const std::optional<std::string>& value, std::string* text, bool* useFlag);

// The job name, sender and recipient a save writes: the texts when the job name is typed, the
// login name for all three otherwise. The job name's choice decides for all three on purpose;
// stored tickets depend on it.
struct JobNotesNames {
    std::string jobName;
    std::string senderName;
    std::string recipient;
};
JobNotesNames NamesToWrite(const JobNotesFields& fields, const std::string& loginName);

// Writes every job notes item with the panels' creator; empty messages and the imported
// additional information are removed. The first failing write's status, else noErr.
OSStatus WriteJobNotesToTicket(const JobNotesFields& fields, const std::string& loginName, Ticket* ticket);
// Reads the items into `fields`: a missing flag reads as on, a missing message as empty, a
// name whose flag is on (or that is missing) as empty. Null ticket: paramErr, fields as they
// were; an item of the wrong type leaves its field as it was.
OSStatus ReadJobNotesFromTicket(const Ticket* ticket, JobNotesFields* fields);

// The user's defaults for the three "use" choices, kept in "com.talmo.print.jobnotes.plist".
struct JobNotesPreferences {
    bool useDocumentNameAsJobName = false;
    bool useLoginNameAsSenderName = false;
    bool useLoginNameAsRecipientName = false;
};
// A missing file or entry reads as off; paramErr for a null output.
OSStatus RetrieveJobNotesPreferences(JobNotesPreferences* options);
// Writes a new dictionary of the three numbers (1 or 0); false when the file was not written.
bool StoreJobNotesPreferences(const JobNotesPreferences& options);

// Title and text pairs (titles are localization keys) saying what the job will carry: the
// names a save writes (`documentName` stands for the job name taken from the document) and the
// messages that are not empty.
std::vector<std::pair<std::string, std::string>>
JobNotesSummary(const JobNotesFields& fields, const std::string& loginName, const std::string& documentName);

} // namespace talmo::jobnotes
