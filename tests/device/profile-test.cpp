#include "device/device.h"

#include <gtest/gtest.h>

using namespace talmo;

namespace {

class Profile : public ::testing::Test {
protected:
    void SetUp() override
    {
        TDPFinalize();
        ASSERT_TRUE(
            TDPInitializeFromFile(std::string(TALMO_SOURCE_DIR) + "/tests/device/data/profile-for-tests.plist"));
    }
    void TearDown() override { TDPFinalize(); }

    static std::vector<std::string> ids(const pl::ArrayPtr& features)
    {
        std::vector<std::string> out;
        for (const auto& f : *features) {
            auto id = pl::as<pl::String>(TDPGetFeatureProperty(pl::as<pl::Dictionary>(f), "ID"));
            out.push_back(id ? id->text : "?");
        }
        return out;
    }
};

TEST_F(Profile, PropertyQueriesVisitFeaturesInFileOrder)
{
    using V = std::vector<std::string>;
    // A null value matches any value; a feature without "Properties" (or with the wrong
    // type) never matches.
    EXPECT_EQ(ids(TDPGetFeaturesWithProperty("TPIF")), (V{"sides", "job-name"}));
    EXPECT_EQ(ids(TDPGetFeaturesWithPropertyAndValue("TPIF", pl::makeBool(true))), (V{"sides"}));
    EXPECT_EQ(ids(TDPGetFeaturesWithPropertyAndValue("TPIF", pl::makeInt(1))), V{});
    EXPECT_EQ(ids(TDPGetFeaturesWithProperty("NoSuchProperty")), V{});
}

TEST_F(Profile, DefaultPrefersTheFirstDefaultKeyword)
{
    std::string kind;
    pl::ValuePtr value;
    ASSERT_TRUE(TDPGetFeatureDefaultValue(TDPGetFeature("Sides"), &kind, &value));
    EXPECT_EQ(kind, "Keyword");
    EXPECT_TRUE(pl::equal(value, pl::makeString("TwoSidedLong")));

    ASSERT_TRUE(TDPGetFeatureDefaultValue(TDPGetFeature("JobName"), &kind, &value));
    EXPECT_EQ(kind, "Name");
    ASSERT_TRUE(TDPGetFeatureDefaultValue(TDPGetFeature("Bare"), &kind, &value));
    EXPECT_EQ(kind, "Number");
    EXPECT_TRUE(pl::equal(value, pl::makeInt(3)));
    EXPECT_FALSE(TDPGetFeatureDefaultValue(TDPGetFeature("Broken"), &kind, &value));
    EXPECT_FALSE(TDPGetFeatureDefaultValue(nullptr, &kind, &value));
}

TEST_F(Profile, KeywordsByTPIFValueAndWrongTypes)
{
    auto sides = TDPGetFeature("Sides");
    auto kws = TDPGetKeywordsWithPropertyAndValue(sides, "TPIFValue", pl::makeString("two-sided-long-edge"));
    ASSERT_EQ(kws->size(), 2u);
    EXPECT_EQ(pl::as<pl::String>(kws->at(0))->text, "TwoSidedLong");
    EXPECT_EQ(TDPGetKeywordsWithPropertyAndValue(sides, "TPIFValue", pl::makeString("x"))->size(), 0u);
    auto broken = TDPGetFeature("Broken");
    ASSERT_TRUE(broken);
    EXPECT_EQ(TDPGetFeatureSyntax(broken, "Keyword"), nullptr);
    EXPECT_EQ(TDPGetFeatureProperty(broken, "ID"), nullptr);
    EXPECT_EQ(TDPGetKeywordsWithPropertyAndValue(broken, "TPIFValue", pl::makeString("x"))->size(), 0u);
    EXPECT_EQ(TDPGetFeature("NoSuchFeature"), nullptr);
}

TEST(ProfileUnloaded, EveryLookupAnswersNothing)
{
    TDPFinalize();
    EXPECT_FALSE(TDPInitializeFromFile(std::string(TALMO_SOURCE_DIR) + "/tests/device/data/malformed-not-a-ppd.ppd"));
    EXPECT_EQ(TDPGetFeature("Sides"), nullptr);
    auto all = TDPGetFeaturesWithProperty("TPIF");
    ASSERT_NE(all, nullptr);
    EXPECT_EQ(all->size(), 0u);
}

} // namespace
