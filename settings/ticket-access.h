// Ticket access helpers: reading the print session's tickets and typed reads and writes of
// ticket items and dictionary entries.
//
// Statuses: noErr; paramErr (-50) for a null ticket, dictionary or output pointer or an empty
// key; kPMNoSession (-30879) when there is no (current) session; kPMTicketItemNotFound,
// kPMTicketItemWrongType, kPMTicketItemLocked, kPMInvalidTicket (platform/session.h). A read
// that fails leaves the caller's value untouched.
#pragma once

#include "platform/platform.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

namespace talmo {

// Creator strings passed with every ticket write; items are written unlocked.
inline constexpr char kTalmoPanelCreator[] = "com.talmo.printingmanager"; // the panels' items
inline constexpr char kTalmoSpecialPagesCreator[] = "com.talmo.print";    // special-page arrays, covers
inline constexpr char kTalmoHostCreator[] = "T"; // the host's client information, Image Options items

// The platform's index type.
using CFIndex = int64_t;

// ---- the session's tickets ----

// The ticket kept under `ticketName` ("PMPrintSettingsTicket", ...). The session keeps each
// ticket as a number under its name, read as a signed 32-bit handle. A missing entry returns
// noErr with *ticket untouched; an entry that is not a 32-bit number or names no ticket of
// the session returns kPMInvalidTicket (untouched). Null session: kPMNoSession; null ticket
// pointer: paramErr.
OSStatus GetTicketFromSession(PrintSession* session, std::string_view ticketName, Ticket** ticket);
// The same on GetCurrentPrintSession().
OSStatus GetTicketFromCurrentSession(std::string_view ticketName, Ticket** ticket);
OSStatus GetTicketFromCurrentSession(PrintSession* session, std::string_view ticketName, Ticket** ticket);
// The print settings ticket of the current session, or null.
Ticket* CurrentPrintSettingsTicket();

// ---- dictionary entries ----

// Stores `value` as a number of the index type (an integer). Null dictionary: ignored.
void WriteTicketValue(const pl::DictPtr& dict, std::string_view key, CFIndex value);
// False for a null dictionary or out pointer, an empty key, a missing key, or a value that is
// not a number convertible to CFIndex without loss (an integral real converts).
bool GetCFIndexFromCFDictionary(const pl::DictPtr& dict, std::string_view key, CFIndex* value);

// The platform's number types (the values are the platform's).
enum CFNumberType : int {
    kCFNumberSInt8Type = 1,
    kCFNumberSInt16Type = 2,
    kCFNumberSInt32Type = 3,
    kCFNumberSInt64Type = 4,
    kCFNumberFloat32Type = 5,
    kCFNumberFloat64Type = 6,
    kCFNumberCharType = 7,
    kCFNumberShortType = 8,
    kCFNumberIntType = 9,
    kCFNumberLongType = 10,
    kCFNumberLongLongType = 11,
    kCFNumberFloatType = 12,
    kCFNumberDoubleType = 13,
    kCFNumberCFIndexType = 14,
};

// Stores the number at `valuePtr`, read as `type`: integral types as an integer, floating
// types as a real. False (nothing stored) for a null dictionary or pointer, an empty key or
// an unknown type.
bool CFDictionarySetNumber(const pl::DictPtr& dict, std::string_view key, const void* valuePtr, CFNumberType type);
// Reads the number under `key` into `valuePtr` as `type`. False (nothing written) when absent,
// not a number (a Boolean is not a number), or not representable in the type: integers must
// fit, a real read as an integer must be integral and fit, a real read as Float32 must be in
// its range (rounding is accepted).
bool CFDictionaryGetNumber(const pl::DictPtr& dict, std::string_view key, void* valuePtr, CFNumberType type);

// Typed forms of the two above, for int8..int64, float and double.
template <class T>
requires std::is_arithmetic_v<T> &&
    (!std::is_same_v<T, bool>)bool CFDictionarySetNumber(const pl::DictPtr& dict, std::string_view key, T value);
template <class T>
requires std::is_arithmetic_v<T> &&
    (!std::is_same_v<T, bool>)bool CFDictionaryGetNumber(const pl::DictPtr& dict, std::string_view key, T* value);

enum CFStringEncoding : uint32_t {
    kCFStringEncodingMacRoman = 0,
    kCFStringEncodingISOLatin1 = 0x0201,
    kCFStringEncodingASCII = 0x0600,
    kCFStringEncodingUTF8 = 0x08000100,
};
// Stores the C string converted from `encoding` to a string. False (nothing stored) for a
// null dictionary or string, an empty key, an unknown encoding, or bytes that are invalid
// in the encoding (non-ASCII bytes for ASCII, malformed UTF-8).
bool CFDictionarySetCString(const pl::DictPtr& dict, std::string_view key, const char* cString,
                            CFStringEncoding encoding);
// The nested dictionary under `key`, created empty and stored when missing. It is shared
// with the parent: changes made through it are seen there. Null for a null dictionary or an
// empty key, and when the key holds a value of another type (which is left as it is).
pl::DictPtr CFDictionaryGetDictionaryOrCreate(const pl::DictPtr& dict, std::string_view key);

// Drops the reference and clears it; with shared ownership the value is freed when its last
// owner lets go. A null address is ignored.
template <class T> void CFReleaseAndNULL(std::shared_ptr<T>* ref)
{
    if (ref)
        ref->reset();
}

// ---- typed ticket items ----
//
// Reads: paramErr for a null ticket or output; kPMTicketItemNotFound when absent;
// kPMTicketItemWrongType when the item has another type (Int32: an integer or integral real
// within the signed 32-bit range; Bool: a Boolean only; String: a string only; Dict/Array:
// that container, returned as a copy). *out changes only on noErr.
OSStatus TicketGetInt32(const Ticket* ticket, std::string_view key, int32_t* out);
OSStatus TicketGetBool(const Ticket* ticket, std::string_view key, bool* out);
OSStatus TicketGetString(const Ticket* ticket, std::string_view key, std::string* out);
OSStatus TicketGetDict(const Ticket* ticket, std::string_view key, pl::DictPtr* out);
OSStatus TicketGetArray(const Ticket* ticket, std::string_view key, pl::ArrayPtr* out);
// Writes (unlocked) with `creator`: paramErr for a null ticket, an empty key or creator;
// kPMTicketItemLocked for a locked item. A null dictionary or array removes the item.
OSStatus TicketSetInt32(Ticket* ticket, std::string_view key, int32_t value, std::string_view creator);
OSStatus TicketSetBool(Ticket* ticket, std::string_view key, bool value, std::string_view creator);
OSStatus TicketSetString(Ticket* ticket, std::string_view key, std::string_view value, std::string_view creator);
OSStatus TicketSetDict(Ticket* ticket, std::string_view key, const pl::DictPtr& value, std::string_view creator);
OSStatus TicketSetArray(Ticket* ticket, std::string_view key, const pl::ArrayPtr& value, std::string_view creator);
// noErr also when absent; paramErr for a null ticket; kPMTicketItemLocked when locked.
OSStatus TicketRemove(Ticket* ticket, std::string_view key);

// ---- template definitions ----
namespace internal {
template <class T> constexpr CFNumberType numberTypeOf()
{
    if constexpr (std::is_floating_point_v<T>)
        return sizeof(T) == 4 ? kCFNumberFloat32Type : kCFNumberFloat64Type;
    else if constexpr (std::is_signed_v<T>)
        return sizeof(T) == 1   ? kCFNumberSInt8Type
               : sizeof(T) == 2 ? kCFNumberSInt16Type
               : sizeof(T) == 4 ? kCFNumberSInt32Type
                                : kCFNumberSInt64Type;
    else
        return CFNumberType(0); // unsigned: chosen below
}
bool setUnsigned(const pl::DictPtr& dict, std::string_view key, uint64_t value);
bool getUnsigned(const pl::DictPtr& dict, std::string_view key, uint64_t max, uint64_t* out);
} // namespace internal

template <class T>
requires std::is_arithmetic_v<T> &&
    (!std::is_same_v<T, bool>)bool CFDictionarySetNumber(const pl::DictPtr& dict, std::string_view key, T value)
{
    if constexpr (std::is_unsigned_v<T>)
        return internal::setUnsigned(dict, key, value);
    else
        return CFDictionarySetNumber(dict, key, static_cast<const void*>(&value), internal::numberTypeOf<T>());
}

template <class T>
requires std::is_arithmetic_v<T> &&
    (!std::is_same_v<T, bool>)bool CFDictionaryGetNumber(const pl::DictPtr& dict, std::string_view key, T* value)
{
    if constexpr (std::is_unsigned_v<T>) {
        uint64_t v;
        if (!value || !internal::getUnsigned(dict, key, std::numeric_limits<T>::max(), &v))
            return false;
        *value = static_cast<T>(v);
        return true;
    } else {
        return CFDictionaryGetNumber(dict, key, static_cast<void*>(value), internal::numberTypeOf<T>());
    }
}

} // namespace talmo
