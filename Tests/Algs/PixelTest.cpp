#include "Algs/Pixel.h"

#include <cmath>
#include <limits>
#include <string_view>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

constexpr float kThreshold = 200.0F;

Pixel padH() { return {'H' - 'A', 1.0F}; }

Pixel padHAfter(std::initializer_list<int> signals) {
    Pixel pixel = padH();
    for (const int signal : signals)
        pixel.updatePixelState(signal, kThreshold);
    return pixel;
}

TEST(PixelTest, TurnsOnAndOffWithHysteresis) {
    struct Frame {
        int signal;
        float normalized;
        bool on;
        float onPeak, offTrough, peakAboveNoise;
    };
    Pixel pixel = padH();
    for (const Frame& frame : {
             Frame{0, 0.0F, false, 0.0F, 0.0F, 0.0F},
             Frame{100, 0.5F, false, 0.5F, 0.0F, 0.5F},
             Frame{201, 1.005F, true, 1.005F, 1.005F, 1.005F},
             Frame{400, 2.0F, true, 2.0F, 2.0F, 2.0F},
             Frame{300, 1.5F, true, 2.0F, 1.5F, 2.0F},
             Frame{241, 1.205F, true, 2.0F, 1.205F, 2.0F},
             Frame{239, 1.195F, false, 1.195F, 1.195F, 2.0F},
             Frame{230, 1.15F, false, 1.15F, 1.15F, 2.0F},
             Frame{350, 1.75F, false, 1.75F, 1.15F, 2.0F},
             Frame{401, 2.005F, true, 2.005F, 2.005F, 2.005F},
         }) {
        SCOPED_TRACE(frame.signal);
        pixel.updatePixelState(frame.signal, kThreshold);
        EXPECT_EQ(pixel.normalized, frame.normalized);
        EXPECT_EQ(pixel.on, frame.on);
        EXPECT_EQ(pixel.onPeak, frame.onPeak);
        EXPECT_EQ(pixel.offTrough, frame.offTrough);
        EXPECT_EQ(pixel.peakAboveNoise, frame.peakAboveNoise);
    }
}

TEST(PixelTest, LevelsAreExceededNotReached) {
    EXPECT_FALSE(padHAfter({200}).on);
    EXPECT_TRUE(padHAfter({201}).on);
    // In single precision 1.2 is exactly 60 % of 2.0; with a double's 0.6 it would be above.
    EXPECT_FALSE(padHAfter({400, 240}).on);
    EXPECT_TRUE(padHAfter({400, 241}).on);
    EXPECT_FALSE(padHAfter({75, -300}).everAboveNoise);
    EXPECT_TRUE(padHAfter({76}).aboveNoise);
}

TEST(PixelTest, TouchStatisticsStayUntilReset) {
    Pixel pixel = padHAfter({300, 75});
    EXPECT_FALSE(pixel.aboveNoise || pixel.on);
    EXPECT_TRUE(pixel.everAboveNoise && pixel.everOn);
    EXPECT_EQ(pixel.peakAboveNoise, 1.5F);
    pixel.resetGlobalStats();
    EXPECT_FALSE(pixel.everAboveNoise || pixel.everOn);
    EXPECT_EQ(pixel.peakAboveNoise, 0.0F);
}

TEST(PixelTest, ValueIsTruncatedInSinglePrecision) {
    struct Row {
        float gain;
        int signal;
        std::int32_t value;
    };
    for (const Row& row : {Row{1.9163F, 150, 287}, Row{1.9163F, -150, -287}, Row{0.7F, -1, 0},
                           Row{1.04F, 25, 26}, // 25.999999 in double precision
                           Row{2.4154F, 32767, 79145}, Row{2.4154F, -32768, -79147}}) {
        Pixel pixel(0, row.gain);
        pixel.updatePixelState(row.signal, kThreshold);
        EXPECT_EQ(pixel.value, row.value) << row.signal << " * " << row.gain;
    }
}

TEST(PixelTest, DegenerateThresholdsAreFollowedAndLeftBehind) {
    Pixel pixel = padH();
    pixel.updatePixelState(0, 0.0F);
    EXPECT_TRUE(std::isnan(pixel.normalized));
    EXPECT_FALSE(pixel.on);
    pixel.updatePixelState(100, 0.0F);
    EXPECT_EQ(pixel.normalized, std::numeric_limits<float>::infinity());
    EXPECT_TRUE(pixel.on);
    pixel.updatePixelState(100, 0.0F);
    EXPECT_FALSE(pixel.on) << "infinity does not exceed 60 % of infinity";
    pixel.updatePixelState(-300, -kThreshold);
    EXPECT_EQ(pixel.normalized, 1.5F);
    EXPECT_FALSE(pixel.on) << "the off period's lowest value is infinite";
    pixel.updatePixelState(100, kThreshold);
    pixel.updatePixelState(300, kThreshold);
    EXPECT_TRUE(pixel.on);
}

TEST(PixelTest, PadsBelongToTheirRegions) {
    for (const auto& [pads, region] : {std::pair{"ABCDEFK", PixelRegion::PlayPause},
                                       {"LMNO", PixelRegion::VolumeDown},
                                       {"GHIJ", PixelRegion::VolumeUp}})
        for (const char pad : std::string_view(pads))
            EXPECT_EQ(regionOfPad(pad - 'A'), region) << pad;
    for (const std::int32_t noPad : {-1, 15, 32, int{'A'}})
        EXPECT_EQ(regionOfPad(noPad), PixelRegion::None) << noPad;
}

} // namespace
} // namespace VeltoTouch::Tests
