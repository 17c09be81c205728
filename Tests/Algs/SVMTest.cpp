#include "Algs/SVM.h"
#include "Algs/Algs.h"

#include <span>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

// The score of a frame whose pads, then groups, have these values; those left out are 0. Another frame comes before it.
float scoreOf(std::span<const int> values) {
    Algs algs;
    SVM svm;
    algs.pixels.value[4] = 300;
    svm.updateSVMScore(algs.pixels, algs.virtualPixels, 200.0F, 0);
    algs.pixels.value[4] = 0;
    for (std::size_t i = 0; i < values.size(); ++i)
        (i < kPadCount ? algs.pixels.value[i] : algs.virtualPixels.value[i - kPadCount]) = values[i];
    svm.updateSVMScore(algs.pixels, algs.virtualPixels, 200.0F, 10);
    return svm.getSVMScore();
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
