// Property-list value model: the stand-in for the platform's dictionaries, arrays, strings,
// numbers, booleans, dates and data. Values are shared (a dictionary handed out and changed in
// place is seen by its parent), containers are always mutable, and dictionaries keep insertion
// order so that "the dictionary's own order" is the file order.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace talmo::pl {

enum class Type { String, Integer, Real, Boolean, Date, Data, Array, Dictionary };

class Value;
class Dictionary;
class Array;
using ValuePtr = std::shared_ptr<Value>;
using DictPtr = std::shared_ptr<Dictionary>;
using ArrayPtr = std::shared_ptr<Array>;

class Value {
public:
    explicit Value(Type t) : type_(t) { }
    virtual ~Value() = default;
    Type type() const { return type_; }

private:
    Type type_;
};

// UTF-8 text. A null string of the design is an absent value (std::optional), never a String.
class String final : public Value {
public:
    explicit String(std::string s) : Value(Type::String), text(std::move(s)) { }
    std::string text;
};

// Numbers remember whether they are integral, so a file's <integer> stays <integer>.
class Integer final : public Value {
public:
    explicit Integer(int64_t v) : Value(Type::Integer), value(v) { }
    int64_t value;
};

class Real final : public Value {
public:
    explicit Real(double v) : Value(Type::Real), value(v) { }
    double value;
};

class Boolean final : public Value {
public:
    explicit Boolean(bool v) : Value(Type::Boolean), value(v) { }
    bool value;
};

// Seconds since 2001-01-01T00:00:00Z, the platform's absolute time.
class Date final : public Value {
public:
    explicit Date(double s) : Value(Type::Date), seconds(s) { }
    double seconds;
};

class Data final : public Value {
public:
    explicit Data(std::vector<uint8_t> b) : Value(Type::Data), bytes(std::move(b)) { }
    std::vector<uint8_t> bytes;
};

class Array final : public Value {
public:
    Array() : Value(Type::Array) { }

    size_t size() const { return items_.size(); }
    bool empty() const { return items_.empty(); }
    // Null when i is out of range.
    ValuePtr at(size_t i) const { return i < items_.size() ? items_[i] : nullptr; }
    void append(ValuePtr v);
    void insert(size_t i, ValuePtr v); // i clamped to size()
    void set(size_t i, ValuePtr v);    // ignored when out of range
    void removeAt(size_t i);           // ignored when out of range
    void clear() { items_.clear(); }
    void reserve(size_t n) { items_.reserve(n); }

    const std::vector<ValuePtr>& items() const { return items_; }
    auto begin() const { return items_.begin(); }
    auto end() const { return items_.end(); }

private:
    std::vector<ValuePtr> items_;
};

class Dictionary final : public Value {
public:
    using Entry = std::pair<std::string, ValuePtr>;
    Dictionary() : Value(Type::Dictionary) { }

    size_t size() const { return entries_.size(); }
    bool empty() const { return entries_.empty(); }
    bool contains(std::string_view key) const { return find(key) != npos; }
    ValuePtr get(std::string_view key) const;
    // Replaces in place (keeping the key's position) or appends. A null value removes the key.
    void set(std::string_view key, ValuePtr v);
    void remove(std::string_view key);
    void clear();

    // Typed reads: nullopt (or null) when absent or of another type. getInt accepts an
    // integral real; getReal accepts an integer.
    std::optional<std::string> getString(std::string_view key) const;
    std::optional<int64_t> getInt(std::string_view key) const;
    std::optional<double> getReal(std::string_view key) const;
    std::optional<bool> getBool(std::string_view key) const;
    DictPtr getDict(std::string_view key) const;
    ArrayPtr getArray(std::string_view key) const;

    void setString(std::string_view key, std::string v);
    void setInt(std::string_view key, int64_t v);
    void setReal(std::string_view key, double v);
    void setBool(std::string_view key, bool v);

    const std::vector<Entry>& entries() const { return entries_; }
    auto begin() const { return entries_.begin(); }
    auto end() const { return entries_.end(); }

private:
    static constexpr size_t npos = static_cast<size_t>(-1);
    size_t find(std::string_view key) const;
    void reindexFrom(size_t i);

    std::vector<Entry> entries_;
    std::unordered_map<std::string, size_t> index_;
};

// Factories.
std::shared_ptr<String> makeString(std::string s);
std::shared_ptr<Integer> makeInt(int64_t v);
std::shared_ptr<Real> makeReal(double v);
std::shared_ptr<Boolean> makeBool(bool v);
std::shared_ptr<Date> makeDate(double secondsSince2001);
std::shared_ptr<Data> makeData(std::vector<uint8_t> bytes);
ArrayPtr makeArray();
DictPtr makeDict();

// Checked downcast: null when v is null or of another type.
template <class T> std::shared_ptr<T> as(const ValuePtr& v);

// Deep structural equality (an integer never equals a real; dictionaries compare as
// key/value sets, order ignored, as the platform does).
bool equal(const ValuePtr& a, const ValuePtr& b);
// Deep copy: the copy shares nothing with the original.
ValuePtr deepCopy(const ValuePtr& v);
DictPtr deepCopy(const DictPtr& d);

// --- template definitions ---
template <class T> constexpr Type typeOf();
template <> constexpr Type typeOf<String>() { return Type::String; }
template <> constexpr Type typeOf<Integer>() { return Type::Integer; }
template <> constexpr Type typeOf<Real>() { return Type::Real; }
template <> constexpr Type typeOf<Boolean>() { return Type::Boolean; }
template <> constexpr Type typeOf<Date>() { return Type::Date; }
template <> constexpr Type typeOf<Data>() { return Type::Data; }
template <> constexpr Type typeOf<Array>() { return Type::Array; }
template <> constexpr Type typeOf<Dictionary>() { return Type::Dictionary; }

template <class T> std::shared_ptr<T> as(const ValuePtr& v)
{
    if (!v || v->type() != typeOf<T>())
        return nullptr;
    return std::static_pointer_cast<T>(v);
}

} // namespace talmo::pl
