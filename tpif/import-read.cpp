// Reading a TPIF file from outside: bounded, no network, no entities.
#include "tpif/tpif.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace talmo {

namespace {

struct ParserCtxtFree {
    void operator()(xmlParserCtxt* c) const { xmlFreeParserCtxt(c); }
};

struct ReadState {
    bool declaresEntity = false;
};

// Any entity declaration stops the parse before the entity can be registered, let alone
// expanded: a document that needs entities is not one the writer makes, and expansion after
// parsing (reading a node's content) is where a small file becomes gigabytes.
void refuseEntity(void* ctx, const xmlChar*, int, const xmlChar*, const xmlChar*, xmlChar*)
{
    auto* ctxt = static_cast<xmlParserCtxtPtr>(ctx);
    static_cast<ReadState*>(ctxt->_private)->declaresEntity = true;
    xmlStopParser(ctxt);
}

void refuseUnparsedEntity(void* ctx, const xmlChar*, const xmlChar*, const xmlChar*, const xmlChar*)
{
    refuseEntity(ctx, nullptr, 0, nullptr, nullptr, nullptr);
}

void quiet(void*, const char*, ...) { }
void quietStructured(void*, xmlErrorPtr) { }

// The system's own documents close the account id element with "</job-accounting-id>", which
// its printers expect and no XML parser accepts. That exact closing tag is mended in place
// ("</job-account-id   >": blanks before ">" are allowed and keep the length) so that exported
// files with accounting import; nothing else is changed.
void mendAccountingTag(std::string& data)
{
    static constexpr std::string_view bad = "</job-accounting-id>";
    static constexpr std::string_view good = "</job-account-id   >";
    static_assert(bad.size() == good.size());
    for (size_t p = data.find(bad); p != std::string::npos; p = data.find(bad, p + bad.size()))
        data.replace(p, bad.size(), good);
}

void setWhy(std::string* why, std::string text)
{
    if (why)
        *why = std::move(text);
}

} // namespace

namespace {

TPIFDocument parse(std::string text, std::string* why)
{
    if (text.empty()) {
        setWhy(why, "empty file");
        return nullptr;
    }
    if (text.size() > kTPIFMaxFileSize) {
        setWhy(why, "file too large");
        return nullptr;
    }
    mendAccountingTag(text);

    std::unique_ptr<xmlParserCtxt, ParserCtxtFree> ctxt(xmlNewParserCtxt());
    if (!ctxt || !ctxt->sax) {
        setWhy(why, "out of memory");
        return nullptr;
    }
    ReadState state;
    ctxt->_private = &state;
    ctxt->sax->entityDecl = refuseEntity;
    ctxt->sax->unparsedEntityDecl = refuseUnparsedEntity;
    ctxt->sax->error = quiet;
    ctxt->sax->warning = quiet;
    ctxt->sax->serror = quietStructured;
    ctxt->vctxt.error = quiet;
    ctxt->vctxt.warning = quiet;

    // No XML_PARSE_NOENT, DTDLOAD, DTDATTR, XINCLUDE or HUGE: libxml2's default depth and
    // size limits stay in force and nothing outside the file is ever read.
    const int options = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_NOCDATA;
    xmlGenericErrorFunc oldGeneric = xmlGenericError;
    void* oldGenericCtx = xmlGenericErrorContext;
    xmlSetGenericErrorFunc(nullptr, quiet);
    TPIFDocument doc(
        xmlCtxtReadMemory(ctxt.get(), text.data(), static_cast<int>(text.size()), "tpif.xml", nullptr, options));
    xmlSetGenericErrorFunc(oldGenericCtx, oldGeneric);

    if (state.declaresEntity) {
        setWhy(why, "the document declares entities");
        return nullptr;
    }
    if (!doc || !ctxt->wellFormed) {
        const xmlError* err = xmlCtxtGetLastError(ctxt.get());
        setWhy(why, err && err->message ? "not well-formed XML (line " + std::to_string(err->line) + ")"
                                        : std::string("not well-formed XML"));
        return nullptr;
    }
    if (doc->intSubset && (doc->intSubset->entities || doc->intSubset->pentities)) {
        setWhy(why, "the document declares entities");
        return nullptr;
    }
    xmlNodePtr root = xmlDocGetRootElement(doc.get());
    if (!root || xmlStrcmp(root->name, BAD_CAST "tpif") != 0) {
        setWhy(why, "not a TPIF document (the root element is not \"tpif\")");
        return nullptr;
    }
    return doc;
}

} // namespace

TPIFDocument TPIFReadDocumentFromMemory(const char* data, size_t size, std::string* why)
{
    if (!data || size > kTPIFMaxFileSize) {
        setWhy(why, data ? "file too large" : "empty file");
        return nullptr;
    }
    return parse(std::string(data, size), why);
}

TPIFDocument TPIFReadDocument(const std::string& path, std::string* why)
{
    // O_NONBLOCK: a FIFO chosen by mistake must not hang the dialog; it is refused below.
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) {
        setWhy(why, std::strerror(errno));
        return nullptr;
    }
    struct stat st { };
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        setWhy(why, "not a regular file");
        return nullptr;
    }
    if (st.st_size <= 0 || static_cast<uint64_t>(st.st_size) > kTPIFMaxFileSize) {
        ::close(fd);
        setWhy(why, st.st_size <= 0 ? "empty file" : "file too large");
        return nullptr;
    }
    std::string data(static_cast<size_t>(st.st_size), '\0');
    size_t got = 0;
    while (got < data.size()) {
        const ssize_t n = ::read(fd, data.data() + got, data.size() - got);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        got += static_cast<size_t>(n);
    }
    ::close(fd);
    data.resize(got);
    return parse(std::move(data), why);
}

} // namespace talmo
