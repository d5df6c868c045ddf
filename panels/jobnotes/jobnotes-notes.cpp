#include "panels/jobnotes/jobnotes-notes.h"

namespace talmo::jobnotes {

const SettingMap _JobNameMap[] = {
    {"UseJobName", 1, 0, nullptr, false},
    {nullptr, 0, 0, nullptr, false},
};
const SettingMap _LoginNameMap[] = {
    {"UseLoginName", 1, 0, nullptr, false},
    {nullptr, 0, 0, nullptr, false},
};

namespace {

constexpr char kUseDocumentNameAsJobName[] = "useDocumentNameAsJobName";
constexpr char kUseLoginNameAsSenderName[] = "useLoginNameAsSenderName";
constexpr char kUseLoginNameAsRecipientName[] = "useLoginNameAsRecipientName";

// The first failure wins; later writes still run so one locked item does not stop the rest.
void keepFirst(OSStatus* first, OSStatus status)
{
    if (*first == noErr)
        *first = status;
}

OSStatus setOrRemove(Ticket* ticket, const char* key, const std::string& text)
{
    return text.empty() ? TicketRemove(ticket, key) : TicketSetString(ticket, key, text, kTalmoPanelCreator);
}

void readFlag(const Ticket* ticket, const char* key, bool* flag)
{
    if (TicketGetBool(ticket, key, flag) == kPMTicketItemNotFound)
        *flag = true;
}

void readText(const Ticket* ticket, const char* key, std::string* text)
{
    if (TicketGetString(ticket, key, text) == kPMTicketItemNotFound)
        text->clear();
}

void readName(const Ticket* ticket, const char* key, bool useFlag, std::string* text)
{
    if (useFlag)
        text->clear();
    else
        readText(ticket, key, text);
}

bool preference(const pl::DictPtr& prefs, const char* key)
{
    int64_t value = 0;
    return prefs && CFDictionaryGetNumber(prefs, key, &value) && value != 0;
}

} // namespace

void ApplyComboValue(const std::optional<std::string>& value, std::string* text, bool* useFlag)
{
    if (value) {
        *text = *value;
        *useFlag = false;
    } else {
        *useFlag = true;
    }
}

JobNotesNames NamesToWrite(const JobNotesFields& fields, const std::string& loginName)
{
    if (fields.useJobName)
        return {loginName, loginName, loginName};
    return {fields.jobName, fields.senderName, fields.recipient};
}

OSStatus WriteJobNotesToTicket(const JobNotesFields& fields, const std::string& loginName, Ticket* ticket)
{
    if (!ticket)
        return paramErr;
    OSStatus status = noErr;
    keepFirst(&status, setOrRemove(ticket, kJobNotesMessageKey, fields.message));
    keepFirst(&status, setOrRemove(ticket, kJobNotesSheetMessageKey, fields.sheetMessage));
    keepFirst(&status, TicketRemove(ticket, kJobNotesAdditionalInfoKey));
    keepFirst(&status, TicketSetBool(ticket, kJobNotesUseJobNameKey, fields.useJobName, kTalmoPanelCreator));
    keepFirst(&status,
              TicketSetBool(ticket, kJobNotesSenderUseLoginNameKey, fields.senderUseLoginName, kTalmoPanelCreator));
    keepFirst(&status, TicketSetBool(ticket, kJobNotesRecipientUseLoginNameKey, fields.recipientUseLoginName,
                                     kTalmoPanelCreator));
    const JobNotesNames names = NamesToWrite(fields, loginName);
    keepFirst(&status, TicketSetString(ticket, kJobNotesJobNameKey, names.jobName, kTalmoPanelCreator));
    keepFirst(&status, TicketSetString(ticket, kJobNotesSenderNameKey, names.senderName, kTalmoPanelCreator));
    keepFirst(&status, TicketSetString(ticket, kJobNotesRecipientKey, names.recipient, kTalmoPanelCreator));
    return status;
}

OSStatus ReadJobNotesFromTicket(const Ticket* ticket, JobNotesFields* fields)
{
    if (!ticket || !fields)
        return paramErr;
    readFlag(ticket, kJobNotesUseJobNameKey, &fields->useJobName);
    readFlag(ticket, kJobNotesSenderUseLoginNameKey, &fields->senderUseLoginName);
    readFlag(ticket, kJobNotesRecipientUseLoginNameKey, &fields->recipientUseLoginName);
    readText(ticket, kJobNotesMessageKey, &fields->message);
    readText(ticket, kJobNotesSheetMessageKey, &fields->sheetMessage);
    readName(ticket, kJobNotesJobNameKey, fields->useJobName, &fields->jobName);
    readName(ticket, kJobNotesSenderNameKey, fields->senderUseLoginName, &fields->senderName);
    readName(ticket, kJobNotesRecipientKey, fields->recipientUseLoginName, &fields->recipient);
    return noErr;
}

OSStatus RetrieveJobNotesPreferences(JobNotesPreferences* options)
{
    if (!options)
        return paramErr;
    const pl::DictPtr prefs = CopyUserPreferences(kJobNotesFile);
    options->useDocumentNameAsJobName = preference(prefs, kUseDocumentNameAsJobName);
    options->useLoginNameAsSenderName = preference(prefs, kUseLoginNameAsSenderName);
    options->useLoginNameAsRecipientName = preference(prefs, kUseLoginNameAsRecipientName);
    return noErr;
}

bool StoreJobNotesPreferences(const JobNotesPreferences& options)
{
    const pl::DictPtr prefs = pl::makeDict();
    prefs->setInt(kUseDocumentNameAsJobName, options.useDocumentNameAsJobName ? 1 : 0);
    prefs->setInt(kUseLoginNameAsSenderName, options.useLoginNameAsSenderName ? 1 : 0);
    prefs->setInt(kUseLoginNameAsRecipientName, options.useLoginNameAsRecipientName ? 1 : 0);
    return WriteUserPreferences(kJobNotesFile, prefs);
}

std::vector<std::pair<std::string, std::string>>
JobNotesSummary(const JobNotesFields& fields, const std::string& loginName, const std::string& documentName)
{
    const JobNotesNames names = NamesToWrite(fields, loginName);
    std::vector<std::pair<std::string, std::string>> lines = {
        {"Job Name", fields.useJobName ? documentName : names.jobName},
        {"Sender Name", names.senderName},
        {"Recipient Name", names.recipient},
    };
    if (!fields.message.empty())
        lines.emplace_back("JobNotesMessage", fields.message);
    if (!fields.sheetMessage.empty())
        lines.emplace_back("JobNotesSheetMessage", fields.sheetMessage);
    return lines;
}

} // namespace talmo::jobnotes
