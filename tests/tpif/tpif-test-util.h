// Helpers of the TPIF tests: a capturing sink, a byte-exact comparison that names the first
// differing byte, captured diagnostics and a libxml2 re-parse.
#pragma once

#include "tpif/tpif.h"

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

namespace tpiftest {

// Collects every text handed to the sink. Like the real sink it relies on the terminator,
// since writers may pass 0 for the length.
struct StringSink {
    std::string text;
    int calls = 0;
    talmo::writeData sink{this, [](void* cookie, const char* t, size_t) {
                              auto* self = static_cast<StringSink*>(cookie);
                              self->text += t;
                              ++self->calls;
                          }};
    const talmo::writeData* get() const { return &sink; }
};

// "" when equal, else where and how the texts first differ.
inline std::string firstDifference(const std::string& actual, const std::string& expected)
{
    size_t i = 0;
    while (i < actual.size() && i < expected.size() && actual[i] == expected[i])
        ++i;
    if (i == actual.size() && i == expected.size())
        return "";
    size_t line = 1 + static_cast<size_t>(std::count(expected.begin(), expected.begin() + static_cast<long>(i), '\n'));
    auto show = [&](const std::string& s) {
        if (i >= s.size())
            return std::string("<end of text>");
        std::string out;
        for (size_t k = i; k < s.size() && k < i + 40; ++k) {
            char c = s[k];
            out += c == '\t' ? std::string("\\t") : c == '\n' ? std::string("\\n") : std::string(1, c);
        }
        return out;
    };
    std::ostringstream os;
    os << "first difference at byte " << i << " (line " << line << "): actual \"" << show(actual) << "\", expected \""
       << show(expected) << "\"";
    return os.str();
}

#define EXPECT_SAME_BYTES(actual, expected) EXPECT_EQ(::tpiftest::firstDifference((actual), (expected)), "")

inline std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

inline std::string dataPath(const std::string& name)
{
    return std::string(TALMO_SOURCE_DIR) + "/tests/tpif/data/" + name;
}

// Redirects the DEBUG lines into a buffer for the life of the object.
class DiagCapture {
public:
    DiagCapture() : file_(std::tmpfile()) { talmo::tpif_errfp = file_; }
    ~DiagCapture()
    {
        talmo::tpif_errfp = nullptr;
        if (file_)
            std::fclose(file_);
    }
    std::string text()
    {
        std::fflush(file_);
        std::rewind(file_);
        std::string out;
        char buf[4096];
        size_t n;
        while ((n = std::fread(buf, 1, sizeof buf, file_)) > 0)
            out.append(buf, n);
        return out;
    }

private:
    FILE* file_;
};

// The accounting element closes with a tag that does not match its opening one, which the
// printers expect; a conforming parser cannot read that line, so it is checked byte-exact by
// the accounting tests and mended here (only that exact closing tag) before parsing.
inline std::string mendAccounting(std::string doc)
{
    const std::string bad = "</job-accounting-id>\n";
    const std::string good = "</job-account-id>\n";
    for (size_t p = doc.find(bad); p != std::string::npos; p = doc.find(bad, p + good.size()))
        doc.replace(p, bad.size(), good);
    return doc;
}

struct ParsedDoc {
    xmlDocPtr doc = nullptr;
    int errors = 0;
    ~ParsedDoc()
    {
        if (doc)
            xmlFreeDoc(doc);
    }
};

inline void countErrors(void* ctx, const char*, ...) { ++*static_cast<int*>(ctx); }

inline void parse(const std::string& text, ParsedDoc& out)
{
    xmlSetGenericErrorFunc(&out.errors, countErrors);
    out.doc = xmlReadMemory(text.data(), static_cast<int>(text.size()), "tpif.xml", nullptr, XML_PARSE_NONET);
    xmlSetGenericErrorFunc(nullptr, nullptr);
    if (!out.doc)
        ++out.errors;
}

inline int countElements(xmlNodePtr n)
{
    int count = 0;
    for (; n; n = n->next)
        if (n->type == XML_ELEMENT_NODE)
            count += 1 + countElements(n->children);
    return count;
}

} // namespace tpiftest
