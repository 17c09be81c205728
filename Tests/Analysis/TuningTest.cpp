#include "Velto/Analysis/Tuning.h"

#include <algorithm>
#include <random>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

using namespace Analysis;

// Whether `other` is nowhere worse and somewhere better.
bool beats(const Faults& other, const Faults& point) {
    const auto falseOnes = [](const Faults& faults) { return faults.isFalse + faults.stray; };
    return other.missed <= point.missed && other.wrong <= point.wrong && falseOnes(other) <= falseOnes(point) &&
           (other.missed < point.missed || other.wrong < point.wrong || falseOnes(other) < falseOnes(point));
}

TEST(TuningTest, TheFrontIsWhatNoOtherPointBeats) {
    std::mt19937 random(1);
    for (int i = 0; i < 2000; ++i) {
        const std::uint64_t most = 1 + random() % 12; // few, so that many are equal
        std::vector<Faults> points(1 + random() % 40);
        for (Faults& point : points)
            point = {random() % most, random() % most, random() % most, random() % most};
        const Tuned result = tuned({points}, 0);
        points.pop_back(); // the present settings
        for (std::size_t k = 0; k < points.size(); ++k)
            ASSERT_EQ(std::ranges::none_of(points, [&](const Faults& other) { return beats(other, points[k]); }),
                      result.isOnFront[k]);
    }
}

// Over all, the second point is best; without the second or the third recording, the first point.
TEST(TuningTest, EachFoldIsChosenOnTheOthers) {
    const std::vector<std::vector<Faults>> recordings{{{.missed = 0}, {.missed = 9}, {.missed = 5}},
                                                      {{.missed = 9}, {.missed = 0}, {.missed = 5}},
                                                      {{.missed = 9}, {.missed = 1}, {.missed = 5}}};
    EXPECT_EQ(1, tuned(recordings, 3).best);
    EXPECT_EQ(std::uint64_t{9 + 9 + 9}, tuned(recordings, 3).heldOutCost.value());
    EXPECT_EQ(tuned(recordings, 3).heldOutCost, tuned(recordings, 10).heldOutCost); // a fold each
    EXPECT_EQ(std::nullopt, tuned({recordings[0]}, 3).heldOutCost);
}

} // namespace
} // namespace VeltoTouch::Tests
