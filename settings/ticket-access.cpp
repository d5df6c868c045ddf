#include "settings/settings.h"

#include <unicode/ucnv.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace talmo {

// ---- the session's tickets ----

OSStatus GetTicketFromSession(PrintSession* session, std::string_view ticketName, Ticket** ticket)
{
    if (!session)
        return kPMNoSession;
    if (!ticket)
        return paramErr;
    pl::ValuePtr entry = session->dictionary()->get(ticketName);
    if (!entry)
        return noErr;
    int32_t handle = 0;
    if (!CFDictionaryGetNumber(session->dictionary(), ticketName, &handle))
        return kPMInvalidTicket;
    Ticket* found = session->ticketForHandle(handle);
    if (!found)
        return kPMInvalidTicket;
    *ticket = found;
    return noErr;
}

OSStatus GetTicketFromCurrentSession(std::string_view ticketName, Ticket** ticket)
{
    return GetTicketFromSession(GetCurrentPrintSession(), ticketName, ticket);
}

OSStatus GetTicketFromCurrentSession(PrintSession* session, std::string_view ticketName, Ticket** ticket)
{
    return GetTicketFromSession(session, ticketName, ticket);
}

Ticket* CurrentPrintSettingsTicket()
{
    Ticket* t = nullptr;
    GetTicketFromCurrentSession(kPMPrintSettingsTicket, &t);
    return t;
}

// ---- dictionary entries ----

void WriteTicketValue(const pl::DictPtr& dict, std::string_view key, CFIndex value)
{
    if (dict && !key.empty())
        dict->setInt(key, value);
}

bool GetCFIndexFromCFDictionary(const pl::DictPtr& dict, std::string_view key, CFIndex* value)
{
    return CFDictionaryGetNumber(dict, key, static_cast<void*>(value), kCFNumberCFIndexType);
}

namespace {

enum class Kind { Int8, Int16, Int32, Int64, Float32, Float64, Bad };

Kind kindOf(CFNumberType type)
{
    switch (type) {
    case kCFNumberSInt8Type:
    case kCFNumberCharType:
        return Kind::Int8;
    case kCFNumberSInt16Type:
    case kCFNumberShortType:
        return Kind::Int16;
    case kCFNumberSInt32Type:
    case kCFNumberIntType:
        return Kind::Int32;
    case kCFNumberSInt64Type:
    case kCFNumberLongType:
    case kCFNumberLongLongType:
    case kCFNumberCFIndexType:
        return Kind::Int64;
    case kCFNumberFloat32Type:
    case kCFNumberFloatType:
        return Kind::Float32;
    case kCFNumberFloat64Type:
    case kCFNumberDoubleType:
        return Kind::Float64;
    }
    return Kind::Bad;
}

template <class T> bool storeIntegral(int64_t v, void* out)
{
    if (v < std::numeric_limits<T>::min() || v > std::numeric_limits<T>::max())
        return false;
    T t = static_cast<T>(v);
    std::memcpy(out, &t, sizeof t);
    return true;
}

} // namespace

bool CFDictionarySetNumber(const pl::DictPtr& dict, std::string_view key, const void* valuePtr, CFNumberType type)
{
    if (!dict || key.empty() || !valuePtr)
        return false;
    switch (kindOf(type)) {
    case Kind::Int8: {
        int8_t v;
        std::memcpy(&v, valuePtr, sizeof v);
        dict->setInt(key, v);
        return true;
    }
    case Kind::Int16: {
        int16_t v;
        std::memcpy(&v, valuePtr, sizeof v);
        dict->setInt(key, v);
        return true;
    }
    case Kind::Int32: {
        int32_t v;
        std::memcpy(&v, valuePtr, sizeof v);
        dict->setInt(key, v);
        return true;
    }
    case Kind::Int64: {
        int64_t v;
        std::memcpy(&v, valuePtr, sizeof v);
        dict->setInt(key, v);
        return true;
    }
    case Kind::Float32: {
        float v;
        std::memcpy(&v, valuePtr, sizeof v);
        dict->setReal(key, v);
        return true;
    }
    case Kind::Float64: {
        double v;
        std::memcpy(&v, valuePtr, sizeof v);
        dict->setReal(key, v);
        return true;
    }
    case Kind::Bad:
        break;
    }
    return false;
}

bool CFDictionaryGetNumber(const pl::DictPtr& dict, std::string_view key, void* valuePtr, CFNumberType type)
{
    if (!dict || key.empty() || !valuePtr)
        return false;
    Kind kind = kindOf(type);
    if (kind == Kind::Bad)
        return false;
    pl::ValuePtr v = dict->get(key);
    std::optional<int64_t> integral;
    double real = 0;
    if (auto i = pl::as<pl::Integer>(v)) {
        integral = i->value;
        real = double(i->value);
    } else if (auto r = pl::as<pl::Real>(v)) {
        real = r->value;
        // Only an integral real inside int64's range converts to an integer type.
        if (std::isfinite(real) && std::trunc(real) == real && real >= -9223372036854775808.0 &&
            real < 9223372036854775808.0)
            integral = int64_t(real);
    } else {
        return false;
    }
    switch (kind) {
    case Kind::Int8:
        return integral && storeIntegral<int8_t>(*integral, valuePtr);
    case Kind::Int16:
        return integral && storeIntegral<int16_t>(*integral, valuePtr);
    case Kind::Int32:
        return integral && storeIntegral<int32_t>(*integral, valuePtr);
    case Kind::Int64:
        return integral && storeIntegral<int64_t>(*integral, valuePtr);
    case Kind::Float32: {
        if (std::isfinite(real) && std::fabs(real) > double(std::numeric_limits<float>::max()))
            return false;
        float f = float(real);
        std::memcpy(valuePtr, &f, sizeof f);
        return true;
    }
    case Kind::Float64:
        std::memcpy(valuePtr, &real, sizeof real);
        return true;
    case Kind::Bad:
        break;
    }
    return false;
}

namespace internal {

bool setUnsigned(const pl::DictPtr& dict, std::string_view key, uint64_t value)
{
    if (!dict || key.empty() || value > uint64_t(std::numeric_limits<int64_t>::max()))
        return false;
    dict->setInt(key, int64_t(value));
    return true;
}

bool getUnsigned(const pl::DictPtr& dict, std::string_view key, uint64_t max, uint64_t* out)
{
    int64_t v = 0;
    if (!out || !CFDictionaryGetNumber(dict, key, static_cast<void*>(&v), kCFNumberSInt64Type) || v < 0 ||
        uint64_t(v) > max)
        return false;
    *out = uint64_t(v);
    return true;
}

} // namespace internal

namespace {

bool validUtf8(std::string_view s)
{
    UErrorCode status = U_ZERO_ERROR;
    UConverter* conv = ucnv_open("UTF-8", &status);
    if (U_FAILURE(status))
        return false;
    ucnv_setToUCallBack(conv, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    std::vector<UChar> buf(s.size() + 1);
    ucnv_toUChars(conv, buf.data(), int32_t(buf.size()), s.data(), int32_t(s.size()), &status);
    ucnv_close(conv);
    return U_SUCCESS(status);
}

// Converts bytes of a single-byte encoding to UTF-8 with ICU; false on unmapped bytes.
bool toUtf8(const char* encoding, std::string_view in, std::string& out)
{
    UErrorCode status = U_ZERO_ERROR;
    std::vector<char> buf(in.size() * 3 + 1);
    int32_t n =
        ucnv_convert("UTF-8", encoding, buf.data(), int32_t(buf.size()), in.data(), int32_t(in.size()), &status);
    if (U_FAILURE(status) || n < 0)
        return false;
    out.assign(buf.data(), size_t(n));
    return true;
}

} // namespace

bool CFDictionarySetCString(const pl::DictPtr& dict, std::string_view key, const char* cString,
                            CFStringEncoding encoding)
{
    if (!dict || key.empty() || !cString)
        return false;
    std::string_view in(cString);
    if (in.size() > size_t(std::numeric_limits<int32_t>::max() / 4))
        return false;
    std::string text;
    switch (encoding) {
    case kCFStringEncodingUTF8:
        if (!validUtf8(in))
            return false;
        text = std::string(in);
        break;
    case kCFStringEncodingASCII:
        for (char c : in)
            if (uint8_t(c) >= 0x80)
                return false;
        text = std::string(in);
        break;
    case kCFStringEncodingISOLatin1:
        if (!toUtf8("ISO-8859-1", in, text))
            return false;
        break;
    case kCFStringEncodingMacRoman:
        if (!toUtf8("macintosh", in, text))
            return false;
        break;
    default:
        return false;
    }
    dict->setString(key, std::move(text));
    return true;
}

pl::DictPtr CFDictionaryGetDictionaryOrCreate(const pl::DictPtr& dict, std::string_view key)
{
    if (!dict || key.empty())
        return nullptr;
    pl::ValuePtr v = dict->get(key);
    if (!v) {
        auto created = pl::makeDict();
        dict->set(key, created);
        return created;
    }
    return pl::as<pl::Dictionary>(v);
}

// ---- typed ticket items ----

namespace {

// The item's value, or the status that explains why there is none.
OSStatus itemOf(const Ticket* ticket, std::string_view key, const void* out, pl::ValuePtr& value)
{
    if (!ticket || !out || key.empty())
        return paramErr;
    value = ticket->get(key);
    return value ? noErr : kPMTicketItemNotFound;
}

} // namespace

OSStatus TicketGetInt32(const Ticket* ticket, std::string_view key, int32_t* out)
{
    pl::ValuePtr v;
    if (OSStatus st = itemOf(ticket, key, out, v))
        return st;
    auto holder = pl::makeDict();
    holder->set("v", v);
    int32_t n = 0;
    if (!CFDictionaryGetNumber(holder, "v", &n))
        return kPMTicketItemWrongType;
    *out = n;
    return noErr;
}

OSStatus TicketGetBool(const Ticket* ticket, std::string_view key, bool* out)
{
    pl::ValuePtr v;
    if (OSStatus st = itemOf(ticket, key, out, v))
        return st;
    auto b = pl::as<pl::Boolean>(v);
    if (!b)
        return kPMTicketItemWrongType;
    *out = b->value;
    return noErr;
}

OSStatus TicketGetString(const Ticket* ticket, std::string_view key, std::string* out)
{
    pl::ValuePtr v;
    if (OSStatus st = itemOf(ticket, key, out, v))
        return st;
    auto s = pl::as<pl::String>(v);
    if (!s)
        return kPMTicketItemWrongType;
    *out = s->text;
    return noErr;
}

OSStatus TicketGetDict(const Ticket* ticket, std::string_view key, pl::DictPtr* out)
{
    pl::ValuePtr v;
    if (OSStatus st = itemOf(ticket, key, out, v))
        return st;
    auto d = pl::as<pl::Dictionary>(v);
    if (!d)
        return kPMTicketItemWrongType;
    *out = d;
    return noErr;
}

OSStatus TicketGetArray(const Ticket* ticket, std::string_view key, pl::ArrayPtr* out)
{
    pl::ValuePtr v;
    if (OSStatus st = itemOf(ticket, key, out, v))
        return st;
    auto a = pl::as<pl::Array>(v);
    if (!a)
        return kPMTicketItemWrongType;
    *out = a;
    return noErr;
}

OSStatus TicketSetInt32(Ticket* ticket, std::string_view key, int32_t value, std::string_view creator)
{
    return ticket ? ticket->set(key, pl::makeInt(value), creator) : paramErr;
}

OSStatus TicketSetBool(Ticket* ticket, std::string_view key, bool value, std::string_view creator)
{
    return ticket ? ticket->set(key, pl::makeBool(value), creator) : paramErr;
}

OSStatus TicketSetString(Ticket* ticket, std::string_view key, std::string_view value, std::string_view creator)
{
    return ticket ? ticket->set(key, pl::makeString(std::string(value)), creator) : paramErr;
}

OSStatus TicketSetDict(Ticket* ticket, std::string_view key, const pl::DictPtr& value, std::string_view creator)
{
    return ticket ? ticket->set(key, value, creator) : paramErr;
}

OSStatus TicketSetArray(Ticket* ticket, std::string_view key, const pl::ArrayPtr& value, std::string_view creator)
{
    return ticket ? ticket->set(key, value, creator) : paramErr;
}

OSStatus TicketRemove(Ticket* ticket, std::string_view key) { return ticket ? ticket->remove(key) : paramErr; }

} // namespace talmo
