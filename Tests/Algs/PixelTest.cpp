#include "Plugin/Algs/Pixel.h"

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

TEST(PixelTest, TurnsOnAndOffWithHysteresis) {
    struct Frame {
        int signal;
        float normalized;
        bool on;
        float onPeak, offTrough, peakAboveNoise;
    };
    constexpr float kThreshold = 200.0F;
    Pixel pixel('H' - 'A', 1.0F);
    for (const Frame& frame : {
             Frame{75, 0.375F, false, 0.375F, 0.0F, 0.0F}, // noise
             Frame{100, 0.5F, false, 0.5F, 0.0F, 0.5F},
             Frame{200, 1.0F, false, 1.0F, 0.0F, 1.0F}, // the threshold is exceeded, not reached
             Frame{201, 1.005F, true, 1.005F, 1.005F, 1.005F},
             Frame{400, 2.0F, true, 2.0F, 2.0F, 2.0F},
             Frame{300, 1.5F, true, 2.0F, 1.5F, 2.0F},
             Frame{241, 1.205F, true, 2.0F, 1.205F, 2.0F},
             Frame{240, 1.2F, false, 1.2F, 1.2F, 2.0F}, // in single precision exactly 60 %
             Frame{350, 1.75F, false, 1.75F, 1.2F, 2.0F},
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
}

} // namespace
} // namespace VeltoTouch::Tests
