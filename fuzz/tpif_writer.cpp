// Fuzz bytes into the TPIF writer two ways: as the text of every user-text field of a full
// ticket, and as a property list taken for a whole settings ticket. Either way the document
// must parse with libxml2 without an error, and a user text must never change its element
// count.
#include "platform/plist.h"
#include "tpif/tpif.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstdint>
#include <cstdio>
#include <string>

namespace {

using namespace talmo;

void check(bool ok)
{
    if (!ok)
        __builtin_trap();
}

void ignoreErrors(void*, const char*, ...) { }

std::string render(const pl::DictPtr& ticket)
{
    std::string out;
    writeData sink{&out, [](void* cookie, const char* text, size_t) { *static_cast<std::string*>(cookie) += text; }};
    WriteTPIFToSink(&sink, ticket);
    // The accounting element's closing tag is deliberately mismatched; mend that one tag.
    const std::string bad = "</job-accounting-id>\n";
    for (size_t p = out.find(bad); p != std::string::npos; p = out.find(bad, p))
        out.replace(p, bad.size(), "</job-account-id>\n");
    return out;
}

int countElements(xmlNodePtr n)
{
    int count = 0;
    for (; n; n = n->next)
        if (n->type == XML_ELEMENT_NODE)
            count += 1 + countElements(n->children);
    return count;
}

// -1 when the document does not parse.
int elementsOf(const std::string& doc)
{
    if (doc.empty())
        return 0;
    xmlDocPtr d = xmlReadMemory(doc.data(), static_cast<int>(doc.size()), "tpif.xml", nullptr,
                                XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    if (!d)
        return -1;
    const int n = countElements(xmlDocGetRootElement(d));
    xmlFreeDoc(d);
    return n;
}

pl::DictPtr textTicket(const std::string& s)
{
    auto t = pl::makeDict();
    auto options = pl::makeDict();
    options->setBool("TPIFOptionAll", true);
    t->set("com.talmo.print.TPIFOptions", options);
    for (const char* k : {"com.talmo.print.JobNotesJobName", "com.talmo.print.JobNotesSenderName",
                          "com.talmo.print.JobNotesMessage", "com.talmo.print.JobNotesRecipient",
                          "com.talmo.print.JobNotesSheetMessage", "com.talmo.print.JobNotesAdditionalInfo",
                          "com.talmo.print.FinishingCustom", "com.talmo.Act.tpif.UID", "com.talmo.Act.tpif.AID"})
        t->setString(k, s);
    t->setInt("com.talmo.print.FinishingOptions", 22);
    t->setInt("com.talmo.Act.tpif.On", 1);
    auto stock = pl::makeDict();
    stock->setInt("Type", 6);
    stock->setString("CustomType", s);
    stock->setInt("Color", 10);
    stock->setString("CustomColor", s);
    stock->setString("Description", s);
    t->set("com.talmo.print.JobLevelStock", stock);
    auto cover = pl::makeDict();
    auto named = pl::makeDict();
    named->setBool("CustomNameOnly", true);
    named->setString("CustomName", s);
    cover->set("Stock", named);
    t->set("com.talmo.print.SpecialPages.BackCover", cover);
    auto job = pl::makeDict();
    job->setInt("JobType", 4);
    job->setString("SavedJobName", s);
    job->setString("SavedJobLocation", s);
    t->set("com.talmo.print.JobType", job);
    auto color = pl::makeDict();
    for (const char* k :
         {"FCTRC", "RGBImagesProfile", "CMYKTextAndGraphicsProfile", "GrayImagesProfile", "DestinationProfile"})
        color->setString(k, s);
    t->set("com.talmo.print.FullColorOptions", color);
    auto forms = pl::makeDict();
    forms->setInt("UseExistingForm", s.size() % 2 ? 2 : 1);
    forms->setString("MergeWithString", s);
    forms->setString("NewFormString", s);
    t->set("com.talmo.print.BackgroundFormsOptions", forms);
    return t;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static FILE* devnull = std::fopen("/dev/null", "w");
    tpif_errfp = devnull;
    xmlSetGenericErrorFunc(nullptr, ignoreErrors);
    const std::string s(reinterpret_cast<const char*>(data), size);

    // Same shape with a plain text and with the fuzz text: same element count, both parse.
    const int plain = elementsOf(render(textTicket(s.size() % 2 ? "x" : "xy")));
    const int fuzzed = elementsOf(render(textTicket(s)));
    check(plain > 0 && fuzzed == plain);

    // The bytes as a whole settings ticket.
    if (auto ticket = pl::as<pl::Dictionary>(pl::readPlist(s))) {
        auto options = pl::makeDict();
        options->setBool("TPIFOptionAll", true);
        ticket->set("com.talmo.print.TPIFOptions", options);
        check(elementsOf(render(ticket)) > 0);
    }
    return 0;
}
