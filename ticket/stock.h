// Stand-in for the paper stock record until it lands: the dictionary form is kept as it was
// read, so special pages round-trip their stocks unchanged.
#pragma once

#include "settings/settings.h"

namespace talmo {

class Stock {
public:
    Stock() = default;
    explicit Stock(const pl::DictPtr& dict)
    {
        if (dict)
            dict_ = pl::deepCopy(dict);
        if (auto s = dict_->getInt("Source"))
            source_ = static_cast<int32_t>(*s);
    }
    virtual ~Stock() = default;
    pl::DictPtr asTicket() const
    {
        auto d = pl::deepCopy(dict_);
        d->remove("Source");
        if (source_ != kNotSet)
            d->setInt("Source", source_);
        return d;
    }
    bool operator==(const Stock& o) const { return pl::equal(asTicket(), o.asTicket()); }
    int32_t source() const { return source_; }
    void setSource(int32_t v) { source_ = v; }

private:
    pl::DictPtr dict_ = pl::makeDict();
    int32_t source_ = kNotSet;
};

inline void DefaultStock(Stock& stock, int32_t /*context*/) { stock = Stock(); }

} // namespace talmo
