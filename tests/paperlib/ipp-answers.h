// IPP answers built with libcups, the independent writer of what the fetch parses.
#pragma once

#include <cups/cups.h>

#include <functional>
#include <memory>
#include <string>

namespace talmo::test {

struct IppFree {
    void operator()(ipp_t* i) const { ippDelete(i); }
};
using Ipp = std::unique_ptr<ipp_t, IppFree>;

// The wire form of an IPP message.
inline std::string IppBytes(ipp_t* message)
{
    std::string out;
    auto append = [](void* to, ipp_uchar_t* buffer, size_t length) -> ssize_t {
        static_cast<std::string*>(to)->append(reinterpret_cast<const char*>(buffer), length);
        return static_cast<ssize_t>(length);
    };
    ippSetState(message, IPP_STATE_IDLE);
    while (ippWriteIO(&out, append, 1, nullptr, message) != IPP_STATE_DATA) { }
    return out;
}

inline Ipp MediaCol(const std::function<void(ipp_t*)>& fill)
{
    Ipp col(ippNew());
    fill(col.get());
    return col;
}

inline void AddKeyword(ipp_t* col, const char* name, const char* value)
{
    ippAddString(col, IPP_TAG_ZERO, IPP_TAG_KEYWORD, name, nullptr, value);
}

// A media-size collection of two integer members.
inline void AddSize(ipp_t* col, int x, int y, const char* yName = "y-dimension")
{
    Ipp size(ippNew());
    ippAddInteger(size.get(), IPP_TAG_ZERO, IPP_TAG_INTEGER, "x-dimension", x);
    ippAddInteger(size.get(), IPP_TAG_ZERO, IPP_TAG_INTEGER, yName, y);
    ippAddCollection(col, IPP_TAG_ZERO, "media-size", size.get());
}

// A Get-Printer-Attributes answer with `count` A4 papers named "Paper <n>" of 80 + n gsm.
inline std::string PrinterAnswer(int count, ipp_status_t status = IPP_STATUS_OK)
{
    Ipp answer(ippNew());
    ippSetVersion(answer.get(), 2, 0);
    ippSetStatusCode(answer.get(), status);
    ippSetRequestId(answer.get(), 1);
    ippAddString(answer.get(), IPP_TAG_OPERATION, IPP_TAG_CHARSET, "attributes-charset", nullptr, "utf-8");
    ipp_attribute_t* db = nullptr;
    for (int i = 0; i < count; ++i) {
        Ipp col = MediaCol([i](ipp_t* c) {
            AddKeyword(c, "media-key", ("Paper " + std::to_string(i)).c_str());
            ippAddInteger(c, IPP_TAG_ZERO, IPP_TAG_INTEGER, "media-weight-metric", 80 + i);
            AddSize(c, 21000, 29700);
        });
        if (!db)
            db = ippAddCollection(answer.get(), IPP_TAG_PRINTER, "media-col-database", col.get());
        else
            ippSetCollection(answer.get(), &db, ippGetCount(db), col.get());
    }
    return IppBytes(answer.get());
}

} // namespace talmo::test
