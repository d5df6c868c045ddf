// A second, independent parser reads what WriteUserPreferences wrote: libplist must see every
// value exactly as we meant it.
#include "tests/settings/prefs-fixture.h"

#include <plist/plist.h>

#include <cstdint>
#include <limits>
#include <memory>

namespace talmo {
namespace {

struct PlistDeleter {
    void operator()(plist_t p) const { plist_free(p); }
};
using PlistPtr = std::unique_ptr<void, PlistDeleter>;

struct FreeDeleter {
    void operator()(void* p) const { std::free(p); }
};

// libplist's node, translated into our model by hand (never through our reader).
pl::ValuePtr fromLibplist(plist_t node)
{
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t b = 0;
        plist_get_bool_val(node, &b);
        return pl::makeBool(b != 0);
    }
    case PLIST_UINT: { // libplist 2.2 keeps every integer as 64 bits, negative ones as two's complement
        uint64_t u = 0;
        plist_get_uint_val(node, &u);
        return pl::makeInt(static_cast<int64_t>(u));
    }
    case PLIST_REAL: {
        double d = 0;
        plist_get_real_val(node, &d);
        return pl::makeReal(d);
    }
    case PLIST_STRING: {
        char* s = nullptr;
        plist_get_string_val(node, &s);
        std::unique_ptr<char, FreeDeleter> owned(s);
        return pl::makeString(s ? s : "");
    }
    case PLIST_DATE: {
        int32_t sec = 0, usec = 0;
        plist_get_date_val(node, &sec, &usec);
        return pl::makeDate(sec + usec / 1e6);
    }
    case PLIST_DATA: {
        char* bytes = nullptr;
        uint64_t length = 0;
        plist_get_data_val(node, &bytes, &length);
        std::unique_ptr<char, FreeDeleter> owned(bytes);
        return pl::makeData(std::vector<uint8_t>(bytes, bytes + length));
    }
    case PLIST_ARRAY: {
        auto a = pl::makeArray();
        for (uint32_t i = 0; i < plist_array_get_size(node); ++i) {
            auto item = fromLibplist(plist_array_get_item(node, i));
            if (!item)
                return nullptr;
            a->append(item);
        }
        return a;
    }
    case PLIST_DICT: {
        auto d = pl::makeDict();
        plist_dict_iter it = nullptr;
        plist_dict_new_iter(node, &it);
        for (;;) {
            char* key = nullptr;
            plist_t value = nullptr;
            plist_dict_next_item(node, it, &key, &value);
            if (!value) {
                std::free(key);
                break;
            }
            std::unique_ptr<char, FreeDeleter> owned(key);
            auto item = fromLibplist(value);
            if (!item) {
                std::free(it);
                return nullptr;
            }
            d->set(key, item);
        }
        std::free(it);
        return d;
    }
    default:
        return nullptr;
    }
}

std::vector<uint8_t> allBytes()
{
    std::vector<uint8_t> v(256);
    for (size_t i = 0; i < v.size(); ++i)
        v[i] = static_cast<uint8_t>(i);
    return v;
}

class PrefsLibplist : public test::PrefsHome { };

TEST_F(PrefsLibplist, IndependentParserReadsEveryValueWeWrite)
{
    auto nested = pl::makeDict();
    auto list = pl::makeArray();
    auto entry = pl::makeDict();
    entry->setString("Name", "Cover <80 lb>");
    entry->setInt("Weight", 216);
    list->append(entry);
    list->append(pl::makeArray());
    list->append(pl::makeDict());
    nested->set("Entries", list);
    nested->set("Empty", pl::makeDict());

    const std::pair<const char*, pl::ValuePtr> table[] = {
        {"markup", pl::makeString("<tag attr=\"v\">&amp; ]]> 'q' & < ></tag>")},
        {"carriage returns", pl::makeString("line 1\r\nline 2\rend\r")},
        {"non-BMP text", pl::makeString("\xF0\x9D\x84\x9E clef, \xF0\x9F\x98\x80 smile, \xE4\xB8\xAD\xE6\x96\x87")},
        {"edge whitespace", pl::makeString("  lead\tand trail \n")},
        {"empty string", pl::makeString("")},
        {"key <&> markup", pl::makeBool(true)},
        {"false", pl::makeBool(false)},
        {"int64 max", pl::makeInt(std::numeric_limits<int64_t>::max())},
        {"int64 min", pl::makeInt(std::numeric_limits<int64_t>::min())},
        {"not set", pl::makeInt(kNotSet)},
        {"minus one", pl::makeInt(-1)},
        {"beyond 32 bits", pl::makeInt(4294967296LL)},
        {"zero", pl::makeInt(0)},
        {"three quarters", pl::makeReal(0.75)},
        {"pi", pl::makeReal(3.141592653589793)},
        {"small negative", pl::makeReal(-1.5e-7)},
        {"huge", pl::makeReal(1e300)},
        {"integral real", pl::makeReal(72.0)},
        {"epoch of 2001", pl::makeDate(0)},
        {"unix epoch", pl::makeDate(-978307200)},
        {"a 2023 date", pl::makeDate(721692000)},
        {"empty data", pl::makeData({})},
        {"all bytes", pl::makeData(allBytes())},
        {"one byte", pl::makeData({0xFF})},
        {"nested", nested},
        {"empty array", pl::makeArray()},
        {"empty dict", pl::makeDict()},
    };
    auto root = pl::makeDict();
    for (const auto& [key, value] : table)
        root->set(key, value);
    ASSERT_TRUE(WriteUserPreferences("com.talmo.print.stocklibrary", root));
    const std::string xml = readAll(prefsFile("com.talmo.print.stocklibrary"));

    plist_t parsed = nullptr;
    plist_from_xml(xml.data(), static_cast<uint32_t>(xml.size()), &parsed);
    PlistPtr owner(parsed);
    ASSERT_NE(parsed, nullptr) << xml;
    ASSERT_EQ(plist_get_node_type(parsed), PLIST_DICT);
    EXPECT_EQ(plist_dict_get_size(parsed), std::size(table));
    for (const auto& [key, value] : table) {
        plist_t node = plist_dict_get_item(parsed, key);
        ASSERT_NE(node, nullptr) << key;
        EXPECT_TRUE(pl::equal(fromLibplist(node), value)) << key << "\n" << xml;
    }
}

} // namespace
} // namespace talmo
