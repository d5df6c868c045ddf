// Property-list reader: whatever it accepts, written back and read again, is the same model;
// the written text is well-formed XML to libxml2 without recovery, entities or network; and
// writing is stable (the second text equals the first).
#include "platform/platform.h"

#include <libxml/parser.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

[[noreturn]] void fail(const char* what, const std::string& xml)
{
    std::fprintf(stderr, "plist fuzz: %s\n--- written ---\n%s\n", what, xml.c_str());
    std::abort();
}

bool parsesStrictly(const std::string& xml)
{
    xmlParserCtxtPtr ctxt = xmlNewParserCtxt();
    if (!ctxt)
        return true; // out of memory is not a finding
    xmlDocPtr doc = xmlCtxtReadMemory(ctxt, xml.data(), static_cast<int>(xml.size()), nullptr, nullptr,
                                      XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    const bool ok = doc && ctxt->wellFormed && !ctxt->recovery && xmlCtxtGetLastError(ctxt) == nullptr;
    xmlFreeDoc(doc);
    xmlFreeParserCtxt(ctxt);
    return ok;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace talmo::pl;
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    ParseResult first;
    ValuePtr model = readPlist(input, &first);
    if (!model) {
        if (first.status == ParseResult::Status::Ok || first.message.empty())
            fail("a refused input without status or message", std::string(input));
        return 0;
    }
    const std::string xml = writePlist(model);
    if (!parsesStrictly(xml))
        fail("written text is not strict XML", xml);
    ParseResult second;
    ValuePtr again = readPlist(xml, &second);
    if (!again)
        fail(("written text does not read back: " + second.message).c_str(), xml);
    if (!equal(model, again))
        fail("read back as another model", xml);
    if (writePlist(again) != xml)
        fail("writing is not stable", xml);
    return 0;
}
