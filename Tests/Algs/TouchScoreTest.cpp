#include "Algs/Algs.h"

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

TEST(TouchScoreTest, FadesWithTheGapBelowNoise) {
    struct Row {
        std::uint32_t belowNoiseTime;
        std::uint32_t time;
        float score;
        float faded;
    };
    for (const Row& row : {
             Row{1000, 1001, 50.0F, 42.174118F}, // 0.8435
             Row{1000, 1002, 50.0F, 28.727047F}, // 0.5745
             Row{1000, 1003, 50.0F, 0.0F},
             Row{1000, 1000, 50.0F, 0.0F}, // the gap wraps to the longest one
             Row{1000, 1001, -50.0F, -42.174118F},
             Row{1000, 1005, -50.0F, 0.0F},
             Row{0xFFFFFFFF, 0, 50.0F, 42.174118F},
         }) {
        HandStats hand;
        hand.touchScore = row.score;
        hand.belowNoiseTime = row.belowNoiseTime;
        hand.decayTouchScore(row.time);
        EXPECT_FLOAT_EQ(hand.touchScore, row.faded) << row.score << " after " << row.time - row.belowNoiseTime << " ms";
    }
}

TEST(TouchScoreTest, AddsEachFrameWithinItsLimits) {
    struct Row {
        const char* name;
        int strongest; // of the frame; 1000 scores above 1, 201 below -1, 0 nothing
        bool wasAboveNoise, aboveNoise;
        float before, after;
    };
    for (const Row& row : {
             Row{"upper limit", 1000, true, true, 99.0F, 100.0F},
             Row{"lower limit", 201, true, true, -99.0F, -100.0F},
             Row{"stays above noise", 0, true, true, 50.0F, 50.0F},
             Row{"falls below noise", 0, true, false, 50.0F, 50.0F},
             Row{"rises above noise: fades first", 0, false, true, 50.0F, 0.0F},
         }) {
        Algs algs;
        HandStats& hand = algs.handStats;
        algs.pixels.value[4] = row.strongest;
        hand.touchScore = row.before;
        hand.belowNoiseTime = 1000;
        hand.wasAboveNoise = row.wasAboveNoise;
        hand.aboveNoise = row.aboveNoise;
        hand.updateTouchScore(algs.pixels, algs.virtualPixels, 1005);
        EXPECT_EQ(hand.touchScore, row.after) << row.name << ", frame score " << hand.svm.getSVMScore();
    }
}

} // namespace
} // namespace VeltoTouch::Tests
