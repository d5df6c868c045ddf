#include "platform/values.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace talmo::pl {

void Array::append(ValuePtr v)
{
    if (v)
        items_.push_back(std::move(v));
}

void Array::insert(size_t i, ValuePtr v)
{
    if (!v)
        return;
    items_.insert(items_.begin() + static_cast<std::ptrdiff_t>(std::min(i, items_.size())), std::move(v));
}

void Array::set(size_t i, ValuePtr v)
{
    if (v && i < items_.size())
        items_[i] = std::move(v);
}

void Array::removeAt(size_t i)
{
    if (i < items_.size())
        items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(i));
}

size_t Dictionary::find(std::string_view key) const
{
    // Small dictionaries are searched directly; the index pays off only for large ones.
    if (entries_.size() <= 16) {
        for (size_t i = 0; i < entries_.size(); ++i)
            if (entries_[i].first == key)
                return i;
        return npos;
    }
    auto it = index_.find(std::string(key));
    return it == index_.end() ? npos : it->second;
}

void Dictionary::reindexFrom(size_t from)
{
    if (entries_.size() <= 16) {
        index_.clear();
        return;
    }
    // The index covers [0, from) when it has been kept up; otherwise rebuild it whole.
    if (index_.size() != from) {
        index_.clear();
        from = 0;
    }
    for (size_t i = from; i < entries_.size(); ++i)
        index_[entries_[i].first] = i;
}

ValuePtr Dictionary::get(std::string_view key) const
{
    size_t i = find(key);
    return i == npos ? nullptr : entries_[i].second;
}

void Dictionary::set(std::string_view key, ValuePtr v)
{
    if (!v) {
        remove(key);
        return;
    }
    size_t i = find(key);
    if (i != npos) {
        entries_[i].second = std::move(v);
        return;
    }
    entries_.emplace_back(std::string(key), std::move(v));
    reindexFrom(entries_.size() - 1);
}

void Dictionary::remove(std::string_view key)
{
    size_t i = find(key);
    if (i == npos)
        return;
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(i));
    index_.clear();
    reindexFrom(0);
}

void Dictionary::clear()
{
    entries_.clear();
    index_.clear();
}

std::optional<std::string> Dictionary::getString(std::string_view key) const
{
    auto s = as<String>(get(key));
    if (!s)
        return std::nullopt;
    return s->text;
}

std::optional<int64_t> Dictionary::getInt(std::string_view key) const
{
    auto v = get(key);
    if (auto i = as<Integer>(v))
        return i->value;
    if (auto r = as<Real>(v)) {
        if (std::isfinite(r->value) && r->value == std::trunc(r->value) && r->value >= -9.2e18 && r->value <= 9.2e18)
            return static_cast<int64_t>(r->value);
    }
    return std::nullopt;
}

std::optional<double> Dictionary::getReal(std::string_view key) const
{
    auto v = get(key);
    if (auto r = as<Real>(v))
        return r->value;
    if (auto i = as<Integer>(v))
        return static_cast<double>(i->value);
    return std::nullopt;
}

std::optional<bool> Dictionary::getBool(std::string_view key) const
{
    auto b = as<Boolean>(get(key));
    if (!b)
        return std::nullopt;
    return b->value;
}

DictPtr Dictionary::getDict(std::string_view key) const { return as<Dictionary>(get(key)); }
ArrayPtr Dictionary::getArray(std::string_view key) const { return as<Array>(get(key)); }

void Dictionary::setString(std::string_view key, std::string v) { set(key, makeString(std::move(v))); }
void Dictionary::setInt(std::string_view key, int64_t v) { set(key, makeInt(v)); }
void Dictionary::setReal(std::string_view key, double v) { set(key, makeReal(v)); }
void Dictionary::setBool(std::string_view key, bool v) { set(key, makeBool(v)); }

std::shared_ptr<String> makeString(std::string s) { return std::make_shared<String>(std::move(s)); }
std::shared_ptr<Integer> makeInt(int64_t v) { return std::make_shared<Integer>(v); }
std::shared_ptr<Real> makeReal(double v) { return std::make_shared<Real>(v); }
std::shared_ptr<Boolean> makeBool(bool v) { return std::make_shared<Boolean>(v); }
std::shared_ptr<Date> makeDate(double s) { return std::make_shared<Date>(s); }
std::shared_ptr<Data> makeData(std::vector<uint8_t> b) { return std::make_shared<Data>(std::move(b)); }
ArrayPtr makeArray() { return std::make_shared<Array>(); }
DictPtr makeDict() { return std::make_shared<Dictionary>(); }

bool equal(const ValuePtr& a, const ValuePtr& b)
{
    if (a == b)
        return true;
    if (!a || !b || a->type() != b->type())
        return false;
    switch (a->type()) {
    case Type::String:
        return as<String>(a)->text == as<String>(b)->text;
    case Type::Integer:
        return as<Integer>(a)->value == as<Integer>(b)->value;
    case Type::Real: {
        double x = as<Real>(a)->value, y = as<Real>(b)->value;
        return x == y || (std::isnan(x) && std::isnan(y));
    }
    case Type::Boolean:
        return as<Boolean>(a)->value == as<Boolean>(b)->value;
    case Type::Date:
        return as<Date>(a)->seconds == as<Date>(b)->seconds;
    case Type::Data:
        return as<Data>(a)->bytes == as<Data>(b)->bytes;
    case Type::Array: {
        auto x = as<Array>(a), y = as<Array>(b);
        if (x->size() != y->size())
            return false;
        for (size_t i = 0; i < x->size(); ++i)
            if (!equal(x->at(i), y->at(i)))
                return false;
        return true;
    }
    case Type::Dictionary: {
        auto x = as<Dictionary>(a), y = as<Dictionary>(b);
        if (x->size() != y->size())
            return false;
        for (const auto& [k, v] : *x)
            if (!equal(v, y->get(k)))
                return false;
        return true;
    }
    }
    return false;
}

ValuePtr deepCopy(const ValuePtr& v)
{
    if (!v)
        return nullptr;
    switch (v->type()) {
    case Type::String:
        return makeString(as<String>(v)->text);
    case Type::Integer:
        return makeInt(as<Integer>(v)->value);
    case Type::Real:
        return makeReal(as<Real>(v)->value);
    case Type::Boolean:
        return makeBool(as<Boolean>(v)->value);
    case Type::Date:
        return makeDate(as<Date>(v)->seconds);
    case Type::Data:
        return makeData(as<Data>(v)->bytes);
    case Type::Array: {
        auto out = makeArray();
        auto in = as<Array>(v);
        out->reserve(in->size());
        for (const auto& item : *in)
            out->append(deepCopy(item));
        return out;
    }
    case Type::Dictionary:
        return deepCopy(as<Dictionary>(v));
    }
    return nullptr;
}

DictPtr deepCopy(const DictPtr& d)
{
    if (!d)
        return nullptr;
    auto out = makeDict();
    for (const auto& [k, v] : *d)
        out->set(k, deepCopy(v));
    return out;
}

} // namespace talmo::pl
