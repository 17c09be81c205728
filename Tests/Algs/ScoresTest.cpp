#include "Plugin/Algs/Algs.h"

#include <tuple>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

class ScoresTest : public testing::Test {
protected:
    // Pads, then groups.
    std::int32_t& value(std::size_t i) {
        return i < kPadCount ? algs.pixels.value[i] : algs.virtualPixels.value[i - kPadCount];
    }

    Algs algs;
    HandStats& hand = algs.handStats;
};

TEST_F(ScoresTest, FramesWithNothingToJudgeScoreZero) {
    struct Row {
        const char* name;
        std::vector<int> values; // those left out are 0
        bool judged;
    };
    for (const Row& row : {
             Row{"nothing", {}, false},
             Row{"largest at the threshold, second noise", {200, 75}, false},
             Row{"largest above the threshold", {201, 0}, true},
             Row{"second above noise", {100, 76}, true},
             Row{"a group and a pad", {0, 0, 76, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 76}, true},
             Row{"negative", {-32768, -300}, false},
         }) {
        for (const std::vector<int>& frame : {{300}, row.values}) { // the first must leave nothing behind
            for (std::size_t i = 0; i < kPadCount + kGroupCount; ++i)
                value(i) = i < frame.size() ? frame[i] : 0;
            hand.svm.updateSVMScore(algs.pixels, algs.virtualPixels, 200.0F, 0);
        }
        EXPECT_EQ(hand.svm.getSVMScore() != 0.0F, row.judged) << row.name;
    }
}

TEST_F(ScoresTest, TouchScoreFadesWithTheGapBelowNoise) {
    struct Row {
        std::uint32_t belowNoiseTime, time;
        float score, faded;
    };
    for (const Row& row : {
             Row{1000, 1001, 50.0F, 42.174118F}, // 0.8435
             Row{1000, 1002, 50.0F, 28.727047F}, // 0.5745
             Row{1000, 1003, 50.0F, 0.0F},
             Row{1000, 1000, 50.0F, 0.0F}, // the gap wraps to the longest one
             Row{0xFFFFFFFF, 0, -50.0F, -42.174118F},
         }) {
        hand.touchScore = row.score;
        hand.belowNoiseTime = row.belowNoiseTime;
        hand.decayTouchScore(row.time);
        EXPECT_FLOAT_EQ(hand.touchScore, row.faded) << row.time - row.belowNoiseTime << " ms";
    }
}

TEST_F(ScoresTest, TouchScoreStaysWithinItsLimits) {
    // A frame whose only value is 1000 scores above 1, with 201 it scores below -1.
    for (const auto& [only, before, after] : {std::tuple{1000, 99.0F, 100.0F}, {201, -99.0F, -100.0F}}) {
        value(4) = only;
        hand.touchScore = before;
        hand.updateTouchScore(algs.pixels, algs.virtualPixels, 1005);
        EXPECT_EQ(hand.touchScore, after) << "frame score " << hand.svm.getSVMScore();
    }
}

TEST_F(ScoresTest, EachFeatureCanRejectATap) {
    struct Row {
        const char* name;
        bool rejected;
        float peakValue;
        std::uint32_t lastEvent, aboveNoise, start, end; // times
        std::size_t inactive;                            // pixels above noise that never turned on
    };
    for (const Row& row : {
             Row{"ordinary", false, 1.5F, 0, 1000, 1000, 1080, 10},
             Row{"no duration", true, 1.5F, 0, 1080, 1080, 1080, 0},
             Row{"weak for its touch alone", true, 1.2F, 0, 1000, 1020, 1410, 0},
             Row{"weak for its duration", true, 1.2F, 0, 1000, 1200, 1500, 0},
             Row{"strong since the last gesture", false, 1.2F, 1150, 1000, 1200, 1500, 0},
             Row{"touches 40 of 320 ms", true, 1.5F, 0, 1000, 1280, 1320, 0},
             Row{"touches 20 of 80 ms, few pixels", false, 1.5F, 0, 1000, 1060, 1080, 5},
             Row{"touches 20 of 80 ms, many pixels", true, 1.5F, 0, 1000, 1060, 1080, 18},
             Row{"strong, 21 pixels", false, 9.0F, 0, 1000, 1000, 1080, 21},
             Row{"strong, 22 pixels", true, 9.0F, 0, 1000, 1000, 1080, 22},
             Row{"times wrap", false, 1.5F, 0, 0xFFFFFFD0, 0xFFFFFFD0, 0x20, 0},
         }) {
        hand.peakValue = row.peakValue;
        hand.lastEventTime = row.lastEvent;
        hand.aboveNoiseTime = row.aboveNoise;
        hand.touchStartTime = row.start;
        hand.touchEndTime = row.end;
        for (std::size_t i = 0; i < kPadCount + kGroupCount; ++i)
            (i < kPadCount ? algs.pixels.everAboveNoise[i] : algs.virtualPixels.everAboveNoise[i - kPadCount]) =
                i < row.inactive ? 1 : 0;
        algs.virtualPixels.everAboveNoise[22] = algs.virtualPixels.everOn[22] = 1; // does not count
        hand.updateTapRejection(algs.pixels, algs.virtualPixels);
        EXPECT_EQ(hand.tapRejected, row.rejected) << row.name << ", score " << hand.tapSVMScore;
    }
}

} // namespace
} // namespace VeltoTouch::Tests
