#include "Algs/Pixel.h"

#include "Tests/Support/TouchFixture.h"

#include <cmath>
#include <limits>
#include <random>

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
        float onPeak;
        float offTrough;
        float peakAboveNoise;
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
        pixel.updatePixelState(frame.signal, kThreshold);
        EXPECT_EQ(pixel.normalized, frame.normalized) << frame.signal;
        EXPECT_EQ(pixel.on, frame.on) << frame.signal;
        EXPECT_EQ(pixel.onPeak, frame.onPeak) << frame.signal;
        EXPECT_EQ(pixel.offTrough, frame.offTrough) << frame.signal;
        EXPECT_EQ(pixel.peakAboveNoise, frame.peakAboveNoise) << frame.signal;
    }
}

TEST(PixelTest, LevelsAreExceededNotReached) {
    EXPECT_FALSE(padHAfter({200}).on);
    EXPECT_TRUE(padHAfter({201}).on);
    // In single precision 1.2 is exactly 60 % of 2.0; with a double's 0.6 it would be above.
    EXPECT_FALSE(padHAfter({400, 240}).on);
    EXPECT_TRUE(padHAfter({400, 241}).on);
}

TEST(PixelTest, ContactsAreCountedFrom76) {
    const Pixel noise = padHAfter({75, -300});
    EXPECT_FALSE(noise.aboveNoise || noise.everAboveNoise);
    EXPECT_EQ(noise.peakAboveNoise, 0.0F);

    const Pixel weak = padHAfter({76});
    EXPECT_TRUE(weak.aboveNoise && weak.everAboveNoise);
    EXPECT_EQ(weak.peakAboveNoise, 0.38F);
}

TEST(PixelTest, TouchStatisticsStayUntilReset) {
    Pixel pixel = padHAfter({300, 75});
    EXPECT_FALSE(pixel.aboveNoise || pixel.on);
    EXPECT_TRUE(pixel.everAboveNoise && pixel.everOn);
    EXPECT_EQ(pixel.peakAboveNoise, 1.5F);

    pixel = padHAfter({300});
    pixel.resetGlobalStats();
    EXPECT_FALSE(pixel.everAboveNoise || pixel.everOn);
    EXPECT_EQ(pixel.peakAboveNoise, 0.0F);
    EXPECT_TRUE(pixel.on) << "a reset is no release";
    EXPECT_EQ(pixel.onPeak, 1.5F);
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
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    Pixel pixel = padH();
    pixel.updatePixelState(0, 0.0F);
    EXPECT_TRUE(std::isnan(pixel.normalized));
    EXPECT_FALSE(pixel.on);
    pixel.updatePixelState(100, 0.0F);
    EXPECT_EQ(pixel.normalized, kInfinity);
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

// The recognizer updates its pixels all at once.
TEST(PixelTest, RecognizersPixelsChangeAsSinglePixelsDo) {
    const auto stateOf = [](const Pixel& pixel) {
        std::string state = fmt::format("value {}, flags {:d}{:d}{:d}{:d}", pixel.value, pixel.on, pixel.aboveNoise,
                                        pixel.everAboveNoise, pixel.everOn);
        for (const float field : {pixel.normalized, pixel.onPeak, pixel.offTrough, pixel.peakAboveNoise})
            state += fmt::format(", {}", std::isnan(field) ? std::fabs(field) : field);
        return state;
    };
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    std::mt19937 random(1);
    TouchSurface surface;
    std::vector<Pixel> single;
    for (std::size_t i = 0; i < kPadCount; ++i)
        single.push_back(surface.algs.pixels[i]);
    for (const float threshold : {200.0F, 0.0F, -200.0F, 1e-38F, kInfinity, 200.0F}) {
        surface.set("ActivationThreshold", threshold);
        for (int frame = 0; frame < 100; ++frame) {
            InputReport::Image image{};
            for (std::size_t i = 0; i < kPadCount; ++i) {
                image.padSignal[i] = static_cast<std::int16_t>(random() % 10 == 0 ? random() : random() % 600 - 100);
                single[i].updatePixelState(image.padSignal[i], threshold);
            }
            surface.send(imageReport(image));
            for (std::size_t i = 0; i < kPadCount; ++i) {
                if (!surface.hand.touching && surface.hand.wasTouching)
                    single[i].resetGlobalStats();
                ASSERT_EQ(stateOf(surface.algs.pixels[i]), stateOf(single[i])) << "pad " << i << ", " << threshold;
            }
        }
    }
}

TEST(PixelTest, PadsBelongToTheirRegions) {
    struct Row {
        const char* pads;
        PixelRegion region;
    };
    for (const Row& row : {Row{"ABCDEFK", PlayPause}, Row{"LMNO", VolumeDown}, Row{"GHIJ", VolumeUp}})
        for (const char pad : std::string_view(row.pads))
            EXPECT_EQ(Pixel(pad - 'A', 1.0F).getPixelRegion(), row.region) << pad;
    for (const std::int32_t noPad : {-1, 15, 32, int{'A'}})
        EXPECT_EQ(regionOfPad(noPad), None) << noPad;
}

} // namespace
} // namespace VeltoTouch::Tests
