// The TPIF document travels inside the PDF as an embedded file (ISO 32000 7.11.4), so any
// queue that passes the PDF on, filters included, passes the job ticket on with it.
#include "host/print-job.h"

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFEFStreamObjectHelper.hh>
#include <qpdf/QPDFEmbeddedFileDocumentHelper.hh>
#include <qpdf/QPDFFileSpecObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>

#include <exception>

namespace talmo::host {

bool AttachFileToPdf(const std::string& in, const std::string& out, const std::string& name, std::string_view bytes,
                     std::string* error)
{
    try {
        QPDF pdf;
        pdf.setSuppressWarnings(true);
        pdf.processFile(in.c_str());
        auto stream = QPDFEFStreamObjectHelper::createEFStream(pdf, std::string(bytes));
        stream.setSubtype("application/xml");
        auto fileSpec = QPDFFileSpecObjectHelper::createFileSpec(pdf, name, stream);
        fileSpec.setDescription("Job ticket");
        QPDFEmbeddedFileDocumentHelper(pdf).replaceEmbeddedFile(name, fileSpec);
        QPDFWriter writer(pdf, out.c_str());
        writer.write();
        return true;
    } catch (const std::exception& e) {
        if (error)
            *error = e.what();
        return false;
    }
}

} // namespace talmo::host
