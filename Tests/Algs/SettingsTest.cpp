#include "Tests/Support/TouchFixture.h"

#include <cmath>

namespace VeltoTouch::Tests {
namespace {

class SettingsTest : public TouchTest {
protected:
    // What a setting holds after a write, as a double.
    template <class T>
    double after(const std::string& key, const T& value) {
        return as<Number>(surface.set(key, value).get(key))->doubleValue();
    }
};

TEST_F(SettingsTest, ValuesAreReadAsTheSettingNeedsThem) {
    struct Row {
        const char* name;
        Ref<Value> written;
        double flag;
        double timeout;
        double threshold;
    };
    for (const Row& row : {
             Row{"true", Number::withBool(true), 1, 1, 1},
             Row{"zero", Number::withLongLong(0), 0, 0, 0},
             Row{"negative", Number::withLongLong(-1), 1, 4294967295.0, -1},
             Row{"fraction", Number::withDouble(0.5), 1, 0, 0.5},
             Row{"negative fraction", Number::withDouble(-1.5), 1, 4294967295.0, -1.5},
             Row{"above 2^32", Number::withUnsignedLong(4294967296 + 250), 1, 250, 4294967296.0},
             Row{"above 2^63", Number::withDouble(1e19), 1, 2313682944, double{1e19F}},
             Row{"huge", Number::withDouble(1e300), 1, 4294967295.0, INFINITY},
             Row{"no float", Number::withLongLong(16777217), 1, 16777217, 16777216},
             Row{"string", makeRef<String>("1"), 0, 0, 0},
             Row{"null", makeRef<Null>(), 0, 0, 0},
             Row{"nil", nullptr, 0, 0, 0},
         }) {
        EXPECT_EQ(after("EnableHoldSuppression", row.written), row.flag) << row.name;
        EXPECT_EQ(after("EnableTapSuppression", row.written), row.flag) << row.name;
        EXPECT_EQ(after("HoldTimeoutMilliseconds", row.written), row.timeout) << row.name;
        EXPECT_EQ(after("ActivationThreshold", row.written), row.threshold) << row.name;
        EXPECT_EQ(after("VirtualNormalizationFactors.3", row.written), row.threshold) << row.name;
    }
    EXPECT_EQ(after("EnableHoldSuppression", NAN), 1);
    EXPECT_EQ(after("HoldTimeoutMilliseconds", NAN), 0);
}

TEST_F(SettingsTest, AnswersAreNumbersOfTheSettingsKind) {
    const auto content = [&](const char* key) { return as<Number>(surface.get(key))->content(); };
    EXPECT_EQ(content("EnableHoldSuppression"), Number::Content{true});
    EXPECT_EQ(content("EnableTapSuppression"), Number::Content{true});
    EXPECT_EQ(content("HoldTimeoutMilliseconds"), Number::Content{std::uint64_t{500}});
    EXPECT_EQ(content("ActivationThreshold"), Number::Content{200.0F});
    EXPECT_EQ(content("VirtualNormalizationFactors.22"), Number::Content{0.6667F});
    surface.set("EnableTapSuppression", false);
    EXPECT_EQ(content("EnableHoldSuppression"), Number::Content{true});
    EXPECT_EQ(content("EnableTapSuppression"), Number::Content{false});

    const auto answer = surface.get("DebugInfo");
    const auto* debugInfo = as<Dictionary>(answer);
    ASSERT_NE(debugInfo, nullptr);
    ASSERT_EQ(debugInfo->entries().size(), 1U);
    EXPECT_TRUE(CFEqual(debugInfo->find("EventStats"), surface.get("EventStats").get()));
}

TEST_F(SettingsTest, UnknownKeysAreIgnoredAndAnsweredWithNil) {
    for (const char* key :
         {"activationThreshold", "ActivationThreshold ", "ActivationThreshold.0", "", "VirtualNormalizationFactors",
          "virtualNormalizationFactors.0", "ResetEventStats", "Algs.ActivationThreshold"}) {
        EXPECT_FALSE(surface.set(key, 1).get(key)) << key;
        EXPECT_EQ(surface.hand.activationThreshold, 200.0F) << key;
        EXPECT_EQ(surface.algs.virtualImage.normalizationFactors, VirtualImage().normalizationFactors) << key;
    }
}

TEST_F(SettingsTest, FactorIndexIsReadAsAStreamReadsIt) {
    struct Row {
        const char* index;
        int factor; // -1 for none
    };
    for (const Row& row : {Row{"0", 0}, Row{"22", 22}, Row{"23", -1}, Row{"x", 0}, Row{"", 0}, Row{"7abc", 7},
                           Row{"07", 7}, Row{"0x10", 0}, Row{" \t5", 5}, Row{"+4", 4}, Row{"1.5", 1}, Row{"-1", -1},
                           Row{"18446744073709551616", 0}, Row{"4294967296", -1}}) {
        TouchSurface fresh;
        const std::string key = std::string("VirtualNormalizationFactors.") + row.index;
        auto expected = fresh.algs.virtualImage.normalizationFactors;
        if (row.factor >= 0)
            expected.at(static_cast<std::size_t>(row.factor)) = 9.5F;
        fresh.set(key, 9.5);
        EXPECT_EQ(fresh.algs.virtualImage.normalizationFactors, expected) << row.index;
        const auto answer = fresh.get(key);
        ASSERT_EQ(static_cast<bool>(answer), row.factor >= 0) << row.index;
        EXPECT_TRUE(!answer || as<Number>(answer)->floatValue() == 9.5F) << row.index;
    }
}

TEST_F(SettingsTest, ThresholdCountsFromTheNextFrameAndFactorsNever) {
    surface.at(1000).press({{'H', 190}}).forFrames(1);
    EXPECT_FALSE(surface.hand.touching);
    surface.set("ActivationThreshold", 100).forFrames(1);
    EXPECT_EQ(surface.algs.pixels['H' - 'A'].normalized, 1.9F);
    EXPECT_TRUE(surface.hand.touching);

    const std::int32_t before = surface.algs.virtualPixels[15].value; // GHI
    EXPECT_EQ(before, 108);
    surface.set("VirtualNormalizationFactors.15", 100.0).forFrames(1);
    EXPECT_EQ(surface.algs.virtualPixels[15].value, before);
}

} // namespace
} // namespace VeltoTouch::Tests
