// A second, independent parser reads what WriteUserPreferences wrote: libplist must see every
// value exactly as we meant it.
#include "tests/settings/prefs-fixture.h"

#include <plist/plist.h>

#include <cstdint>
#include <limits>
#include <memory>

namespace talmo {
namespace {

struct Free {
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
        std::unique_ptr<char, Free> owned(s);
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
        std::unique_ptr<char, Free> owned(bytes);
        return pl::makeData(std::vector<uint8_t>(bytes, bytes + length));
    }
    case PLIST_ARRAY: {
        auto a = pl::makeArray();
        for (uint32_t i = 0; i < plist_array_get_size(node); ++i)
            a->append(fromLibplist(plist_array_get_item(node, i)));
        return a;
    }
    case PLIST_DICT: {
        auto d = pl::makeDict();
        plist_dict_iter it = nullptr;
        plist_dict_new_iter(node, &it);
        std::unique_ptr<void, Free> ownedIter(it);
        for (;;) {
            char* key = nullptr;
            plist_t value = nullptr;
            plist_dict_next_item(node, it, &key, &value);
            std::unique_ptr<char, Free> owned(key);
            if (!value)
                return d;
            d->set(key, fromLibplist(value));
        }
    }
    default:
        return pl::makeString("<unexpected node type>");
    }
}

class PrefsLibplist : public test::PrefsHome { };

TEST_F(PrefsLibplist, IndependentParserReadsEveryValueWeWrite)
{
    std::vector<uint8_t> allBytes(256);
    for (size_t i = 0; i < allBytes.size(); ++i)
        allBytes[i] = static_cast<uint8_t>(i);
    auto list = pl::makeArray();
    list->append(pl::makeString(""));
    list->append(pl::makeBool(false));
    list->append(pl::makeArray());
    list->append(pl::makeDict());

    auto root = pl::makeDict();
    root->set("markup", pl::makeString("<tag attr=\"v\">&amp; ]]> 'q' & < ></tag>"));
    root->set("carriage returns and edge whitespace", pl::makeString("  line 1\r\nline 2\rend\r\t"));
    root->set("non-BMP text", pl::makeString("\xF0\x9D\x84\x9E clef, \xF0\x9F\x98\x80, \xE4\xB8\xAD\xE6\x96\x87"));
    root->set("key <&> markup", pl::makeBool(true));
    root->set("int64 max", pl::makeInt(std::numeric_limits<int64_t>::max()));
    root->set("int64 min", pl::makeInt(std::numeric_limits<int64_t>::min()));
    root->set("pi", pl::makeReal(3.141592653589793));
    root->set("small negative", pl::makeReal(-1.5e-7));
    root->set("unix epoch", pl::makeDate(-978307200));
    root->set("a 2023 date", pl::makeDate(721692000));
    root->set("all bytes", pl::makeData(allBytes));
    root->set("nested", list);
    ASSERT_TRUE(WriteUserPreferences("written.plist", root));
    const std::string xml = readAll(prefsFile("written.plist"));

    plist_t parsed = nullptr;
    plist_from_xml(xml.data(), static_cast<uint32_t>(xml.size()), &parsed);
    ASSERT_NE(parsed, nullptr) << xml;
    const pl::ValuePtr seen = fromLibplist(parsed);
    plist_free(parsed);
    const auto seenDict = pl::as<pl::Dictionary>(seen);
    ASSERT_TRUE(seenDict) << xml;
    EXPECT_EQ(seenDict->size(), root->size());
    for (const auto& [key, value] : *root)
        EXPECT_TRUE(pl::equal(seenDict->get(key), value)) << key << "\n" << xml;
}

} // namespace
} // namespace talmo
