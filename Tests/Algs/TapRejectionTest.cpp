#include "Tests/Support/TouchFixture.h"

namespace VeltoTouch::Tests {
namespace {

TEST(TapRejectionTest, EachFeatureCanRejectATap) {
    struct Row {
        const char* name;
        bool rejected;
        float peakValue = 1.5F;
        std::uint32_t aboveNoise = 1000, start = 1000, end = 1080, lastEvent = 0;
        std::size_t inactive = 0; // pixels above noise that never turned on
    };
    for (const Row& row : {
             Row{.name = "ordinary", .rejected = false, .inactive = 10},
             Row{.name = "no duration", .rejected = true, .aboveNoise = 1080, .start = 1080},
             Row{.name = "weak for its touch alone", .rejected = true, .peakValue = 1.2F, .start = 1020, .end = 1410},
             Row{.name = "weak for its duration", .rejected = true, .peakValue = 1.2F, .start = 1200, .end = 1500},
             Row{.name = "strong since then",
             .rejected = false,
             .peakValue = 1.2F,
             .start = 1200,
             .end = 1500,
             .lastEvent = 1150},
             Row{.name = "touches 40 of 320 ms", .rejected = true, .start = 1280, .end = 1320},
             Row{.name = "touches 20 of 80 ms, few pixels", .rejected = false, .start = 1060, .inactive = 5},
             Row{.name = "touches 20 of 80 ms, many pixels", .rejected = true, .start = 1060, .inactive = 18},
             Row{.name = "strong, 21 pixels", .rejected = false, .peakValue = 9.0F, .inactive = 21},
             Row{.name = "strong, 22 pixels", .rejected = true, .peakValue = 9.0F, .inactive = 22},
             Row{.name = "times wrap", .rejected = false, .aboveNoise = 0xFFFFFFD0, .start = 0xFFFFFFD0, .end = 0x20},
         }) {
        Algs algs;
        HandStats& hand = algs.handStats;
        hand.peakValue = row.peakValue;
        hand.aboveNoiseTime = row.aboveNoise;
        hand.lastEventTime = row.lastEvent;
        hand.touchStartTime = row.start;
        hand.touchEndTime = row.end;
        for (std::size_t i = 0; i < row.inactive; ++i)
            (i < kPadCount ? algs.pixels.everAboveNoise[i] : algs.virtualPixels.everAboveNoise[i - kPadCount]) = 1;
        algs.virtualPixels.everAboveNoise[22] = algs.virtualPixels.everOn[22] = 1; // does not count
        hand.updateTapRejection(algs.pixels, algs.virtualPixels);
        EXPECT_EQ(hand.tapRejected, row.rejected) << row.name << ", score " << hand.tapSVMScore;
    }
}

} // namespace
} // namespace VeltoTouch::Tests
