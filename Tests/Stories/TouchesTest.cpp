#include "Tests/Stories/Touches.h"
#include "Tests/Stories/Teller.h"

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

constexpr std::uint64_t kStories = 300;
constexpr std::size_t kMostAlternatives = 2; // of a story's touches; each takes some 80 plays

TEST(TouchesOfStoriesTest, HaveTrueReasonsAndAlternatives) {
    int cancels = 0;
    for (std::uint64_t seed = 1; seed <= kStories; ++seed) {
        Choices choices(seed);
        const Story story = tellStory(choices, 60, seed % 3 == 0 ? 60 : 4);
        const TouchesCheck check = checkTouches(story, kMostAlternatives);
        ASSERT_EQ("", check.fault) << "seed " << seed << "\n" << textOf(story);
        cancels += check.cancels;
    }
    EXPECT_GT(cancels, 300); // there was something to turn
}

} // namespace
} // namespace VeltoTouch::Tests
