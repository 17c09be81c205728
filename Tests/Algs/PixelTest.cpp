#include "Tests/Support/TouchFixture.h"

#include <cmath>
#include <limits>

namespace VeltoTouch::Tests {
namespace {

constexpr float kThreshold = 200.0F;
constexpr float kInfinity = std::numeric_limits<float>::infinity();

Pixel padHAfter(std::initializer_list<int> signals) {
    Pixel pixel('H' - 'A', 1.0F);
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
    Pixel pixel = padHAfter({});
    for (const Frame& frame : {
             Frame{0, 0.0F, false, 0.0F, 0.0F, 0.0F},
             Frame{100, 0.5F, false, 0.5F, 0.0F, 0.5F},
             Frame{200, 1.0F, false, 1.0F, 0.0F, 1.0F}, // the threshold is exceeded, not reached
             Frame{201, 1.005F, true, 1.005F, 1.005F, 1.005F},
             Frame{400, 2.0F, true, 2.0F, 2.0F, 2.0F},
             Frame{300, 1.5F, true, 2.0F, 1.5F, 2.0F},
             Frame{241, 1.205F, true, 2.0F, 1.205F, 2.0F},
             Frame{240, 1.2F, false, 1.2F, 1.2F, 2.0F}, // in single precision exactly 60 %
             Frame{230, 1.15F, false, 1.15F, 1.15F, 2.0F},
             Frame{350, 1.75F, false, 1.75F, 1.15F, 2.0F},
             Frame{401, 2.005F, true, 2.005F, 2.005F, 2.005F},
             Frame{75, 0.375F, false, 0.375F, 0.375F, 2.005F},
         }) {
        SCOPED_TRACE(frame.signal);
        pixel.updatePixelState(frame.signal, kThreshold);
        EXPECT_EQ(pixel.normalized, frame.normalized);
        EXPECT_EQ(pixel.on, frame.on);
        EXPECT_EQ(pixel.onPeak, frame.onPeak);
        EXPECT_EQ(pixel.offTrough, frame.offTrough);
        EXPECT_EQ(pixel.peakAboveNoise, frame.peakAboveNoise);
        EXPECT_EQ(pixel.aboveNoise, frame.signal > 75);
    }
    EXPECT_TRUE(pixel.everAboveNoise && pixel.everOn) << "kept for the touch";
    pixel.resetGlobalStats();
    EXPECT_FALSE(pixel.everAboveNoise || pixel.everOn || pixel.peakAboveNoise != 0.0F);
    EXPECT_FALSE(padHAfter({75, -300}).everAboveNoise);
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
    struct Frame {
        const char* name;
        int signal;
        float threshold, normalized;
        bool on;
    };
    Pixel pixel = padHAfter({});
    pixel.updatePixelState(0, 0.0F);
    EXPECT_TRUE(std::isnan(pixel.normalized) && !pixel.on);
    for (const Frame& frame : {
             Frame{"no threshold", 100, 0.0F, kInfinity, true},
             Frame{"infinity does not exceed 60 % of infinity", 100, 0.0F, kInfinity, false},
             Frame{"the off period's lowest value is infinite", -300, -kThreshold, 1.5F, false},
             Frame{"a usual threshold", 100, kThreshold, 0.5F, false},
             Frame{"all is as usual", 300, kThreshold, 1.5F, true},
         }) {
        pixel.updatePixelState(frame.signal, frame.threshold);
        EXPECT_EQ(pixel.normalized, frame.normalized) << frame.name;
        EXPECT_EQ(pixel.on, frame.on) << frame.name;
    }
}

class VirtualPixelTest : public TouchTest {
protected:
    Pixel group(std::string_view name) { return surface.algs.virtualPixels[groupIndex(name)]; }
    std::int32_t sumOf(std::string_view name) { return surface.algs.virtualImage.values.at(groupIndex(name)); }
};

TEST_F(VirtualPixelTest, DominantPadIsDisplacedOnlyByAStrongerOne) {
    const auto dominantPad = [&](PadSignals signals) {
        surface.press(signals).forFrames(1);
        return static_cast<char>('A' + group("MNO").index);
    };
    EXPECT_EQ(dominantPad({}), 'M') << "the group's first pad at the beginning";
    EXPECT_EQ(dominantPad({{'N', 72}, {'O', 72}}), 'M') << "noise displaces nothing";
    EXPECT_EQ(sumOf("MNO"), 0);
    EXPECT_EQ(dominantPad({{'N', 100}, {'O', 100}}), 'N') << "of equal pads the first";
    EXPECT_EQ(dominantPad({}), 'N') << "carried over an idle frame";
    EXPECT_EQ(dominantPad({{'O', 200}}), 'O');
    EXPECT_EQ(dominantPad({{'N', 100}, {'O', 100}}), 'O') << "of equal pads the present one";
    surface.algs.Reset();
    EXPECT_EQ(dominantPad({}), 'O') << "carried over the end of a touch";
}

TEST_F(VirtualPixelTest, SumsAreNarrowedTo16Bits) {
    surface.press({{'E', 10000}, {'F', 10000}}).forFrames(1); // values 19163 and 18105
    EXPECT_EQ(sumOf("BCEF"), 37268);
    EXPECT_EQ(group("BCEF").value, -18846); // 0.6667 * (37268 - 65536)
    EXPECT_FALSE(group("BCEF").on || group("BCEF").aboveNoise);
    EXPECT_EQ(group("ABE").value, 12775) << "a sum in range";
    surface.press({{'A', 17050}, {'E', 17098}}).forFrames(1); // values 32768 and 32764
    EXPECT_EQ(group("ABE").value, -2) << "a sum of 65532 is -4";
}

} // namespace
} // namespace VeltoTouch::Tests
