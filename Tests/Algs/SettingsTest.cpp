#include "Tests/Support/TouchFixture.h"

#include <cmath>

namespace VeltoTouch::Tests {
namespace {

class SettingsTest : public TouchTest {
protected:
    Number::Content content(const char* key) { return as<Number>(surface.get(key))->content(); }
};

TEST_F(SettingsTest, ValuesAreReadAsTheSettingNeedsThemAndAnsweredAsNumbersOfItsKind) {
    struct Row {
        const char* name;
        Ref<Value> written;
        bool flag;
        std::uint64_t timeout;
        float threshold;
    };
    for (const Row& row : {
             Row{"true", Number::withBool(true), true, 1, 1},
             Row{"zero", Number::withLongLong(0), false, 0, 0},
             Row{"fraction", Number::withDouble(0.5), true, 0, 0.5F},
             Row{"negative fraction", Number::withDouble(-1.5), true, 4294967295, -1.5F},
             Row{"above 2^32", Number::withUnsignedLong(4294967296 + 250), true, 250, 4294967296.0F},
             Row{"above 2^63", Number::withDouble(1e19), true, 2313682944, 1e19F},
             Row{"huge", Number::withDouble(1e300), true, 4294967295, INFINITY},
             Row{"no float", Number::withLongLong(16777217), true, 16777217, 16777216.0F},
             Row{"string", makeRef<String>("1"), false, 0, 0},
             Row{"nil", nullptr, false, 0, 0},
         }) {
        for (const auto& [key, expected] : std::initializer_list<std::pair<const char*, Number::Content>>{
                 {"EnableHoldSuppression", row.flag},
                 {"EnableTapSuppression", row.flag},
                 {"HoldTimeoutMilliseconds", row.timeout},
                 {"ActivationThreshold", row.threshold},
                 {"VirtualNormalizationFactors.3", row.threshold},
             }) {
            surface.set(key, row.written);
            EXPECT_EQ(content(key), expected) << row.name << " of " << key;
        }
    }
    EXPECT_TRUE(surface.set("EnableHoldSuppression", NAN).hand.enableHoldSuppression);
    EXPECT_EQ(surface.set("HoldTimeoutMilliseconds", NAN).hand.holdTimeoutMs, 0U);
}

TEST_F(SettingsTest, DefaultsAreAnsweredFlagsAreNotMixedUpAndUnknownKeysAreNil) {
    surface.set("EnableTapSuppression", false);
    for (const char* key : {"activationThreshold", "ActivationThreshold.0", "", "VirtualNormalizationFactors",
                            "ResetEventStats", "Algs.ActivationThreshold"})
        EXPECT_FALSE(surface.set(key, 1).get(key)) << key;
    EXPECT_EQ(content("EnableHoldSuppression"), Number::Content{true});
    EXPECT_EQ(content("HoldTimeoutMilliseconds"), Number::Content{std::uint64_t{500}});
    EXPECT_EQ(content("ActivationThreshold"), Number::Content{200.0F});
    EXPECT_EQ(content("VirtualNormalizationFactors.22"), Number::Content{0.6667F});
    EXPECT_EQ(surface.algs.virtualImage.normalizationFactors, VirtualImage().normalizationFactors);
    const auto debugInfo = surface.get("DebugInfo");
    EXPECT_TRUE(CFEqual(as<Dictionary>(debugInfo)->find("EventStats"), surface.get("EventStats").get()));
}

TEST_F(SettingsTest, FactorIndexIsReadAsAStreamReadsIt) {
    struct Row {
        const char* index;
        int factor; // -1 for none
    };
    for (const Row& row :
         {Row{"22", 22}, Row{"23", -1}, Row{"x", 0}, Row{"", 0}, Row{"7abc", 7}, Row{"07", 7}, Row{"0x10", 0},
          Row{" \t5", 5}, Row{"+4", 4}, Row{"-1", -1}, Row{"18446744073709551616", 0}, Row{"4294967296", -1}}) {
        TouchSurface fresh;
        const std::string key = std::string("VirtualNormalizationFactors.") + row.index;
        auto expected = fresh.algs.virtualImage.normalizationFactors;
        if (row.factor >= 0)
            expected.at(static_cast<std::size_t>(row.factor)) = 9.5F;
        const auto answer = fresh.set(key, 9.5).get(key);
        EXPECT_EQ(fresh.algs.virtualImage.normalizationFactors, expected) << row.index;
        EXPECT_EQ(answer && as<Number>(answer)->floatValue() == 9.5F, row.factor >= 0) << row.index;
    }
}

TEST_F(SettingsTest, ThresholdCountsFromTheNextFrameAndFactorsNever) {
    surface.at(1000).press({{'H', 190}}).forFrames(1);
    EXPECT_FALSE(surface.hand.touching);
    surface.set("ActivationThreshold", 100).set("VirtualNormalizationFactors.15", 100.0).forFrames(1);
    EXPECT_EQ(surface.algs.pixels['H' - 'A'].normalized, 1.9F);
    EXPECT_TRUE(surface.hand.touching);
    EXPECT_EQ(surface.algs.virtualPixels[15].value, 108) << "of GHI";
}

} // namespace
} // namespace VeltoTouch::Tests
