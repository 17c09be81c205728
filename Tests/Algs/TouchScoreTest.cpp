#include "Algs/Algs.h"

#include <tuple>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

TEST(TouchScoreTest, FadesWithTheGapBelowNoise) {
    struct Row {
        std::uint32_t belowNoiseTime, time;
        float score, faded;
    };
    for (const Row& row : {
             Row{1000, 1001, 50.0F, 42.174118F}, // 0.8435
             Row{1000, 1002, 50.0F, 28.727047F}, // 0.5745
             Row{1000, 1003, 50.0F, 0.0F},
             Row{1000, 1000, 50.0F, 0.0F}, // the gap wraps to the longest one
             Row{1000, 1001, -50.0F, -42.174118F},
             Row{0xFFFFFFFF, 0, 50.0F, 42.174118F},
         }) {
        HandStats hand;
        hand.touchScore = row.score;
        hand.belowNoiseTime = row.belowNoiseTime;
        hand.decayTouchScore(row.time);
        EXPECT_FLOAT_EQ(hand.touchScore, row.faded) << row.score << " after " << row.time - row.belowNoiseTime << " ms";
    }
}

TEST(TouchScoreTest, StaysWithinItsLimits) {
    // A frame whose only value is 1000 scores above 1, with 201 it scores below -1.
    for (const auto& [value, before, after] : {std::tuple{1000, 99.0F, 100.0F}, {201, -99.0F, -100.0F}}) {
        Algs algs;
        algs.pixels.value[4] = value;
        algs.handStats.touchScore = before;
        algs.handStats.updateTouchScore(algs.pixels, algs.virtualPixels, 1005);
        EXPECT_EQ(algs.handStats.touchScore, after) << "frame score " << algs.handStats.svm.getSVMScore();
    }
}

} // namespace
} // namespace VeltoTouch::Tests
