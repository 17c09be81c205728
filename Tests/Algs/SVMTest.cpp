#include "Algs/SVM.h"
#include "Algs/Algs.h"

#include <algorithm>
#include <random>
#include <span>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

// The score of a frame whose pads, then groups, have these values; those left out are 0. Another frame comes before it.
float scoreOf(std::span<const int> values) {
    Algs algs;
    std::size_t i = 0;
    for (const int value : values) {
        (i < kPadCount ? algs.pixels.value[i] : algs.virtualPixels.value[i - kPadCount]) = value;
        ++i;
    }
    SVM svm;
    Algs before;
    before.pixels.value[4] = 300;
    svm.updateSVMScore(before.pixels, before.virtualPixels, 200.0F, 0);
    svm.updateSVMScore(algs.pixels, algs.virtualPixels, 200.0F, 10);
    return svm.getSVMScore();
}

// E, F and K with the signals 150, 60 and 40, and the groups that they give.
std::vector<int> contactValues() {
    std::vector<int> values{287, 263, 263, 196, 191, 191, 191, 163, 153, 153, 108, 96, 81, 81, 72, 61, 50, 47, 38, 38};
    values.resize(kPadCount + kGroupCount);
    return values;
}

TEST(SVMTest, ScoresTheProfileWhicheverPadCarriesIt) {
    std::vector<int> values = contactValues();
    const float score = scoreOf(values);
    EXPECT_NEAR(score, 0.549158F, 1e-6F);
    std::mt19937 random(1);
    for (int round = 0; round < 20; ++round) {
        std::ranges::shuffle(values, random);
        EXPECT_EQ(scoreOf(values), score) << "round " << round;
    }
}

TEST(SVMTest, FramesWithNothingToJudgeScoreZero) {
    struct Row {
        const char* name;
        std::vector<int> values;
        bool judged;
    };
    for (const Row& row : {
             Row{"nothing", {}, false},
             Row{"largest at the threshold, second noise", {200, 75}, false},
             Row{"largest above the threshold", {201, 0}, true},
             Row{"second above noise", {100, 76}, true},
             Row{"a group and a pad", {0, 0, 76, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 76}, true},
             Row{"negative", {-32768, -300}, false},
         })
        EXPECT_EQ(scoreOf(row.values) != 0.0F, row.judged) << row.name;
}

} // namespace
} // namespace VeltoTouch::Tests
