#include "Tests/Stories/Touches.h"
#include "Tests/Stories/Teller.h"

#include <cstdlib>
#include <iostream>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

constexpr std::uint64_t kStories = 300;
constexpr int kFewestCancels = kStories;       // so that there was something to turn round
constexpr std::uint64_t kWithAlternatives = 6; // every sixth story's first touch: they take some 80 plays

[[noreturn]] void checkStories() {
    int cancels = 0;
    for (std::uint64_t seed = 1; seed <= kStories; ++seed) {
        Choices choices(seed);
        const Story story = tellStory(choices, 60, seed % 3 == 0 ? 60 : 4);
        const TouchesCheck check = checkTouches(story, seed % kWithAlternatives == 0 ? 1 : 0);
        if (!check.fault.empty()) {
            std::cout << "seed " << seed << ": " << check.fault << "\n" << textOf(story) << std::endl;
            std::_Exit(1);
        }
        cancels += check.cancels;
    }
    std::cout << cancels << " cancelled touches turned round" << std::endl;
    std::_Exit(cancels >= kFewestCancels ? 0 : 1);
}

// In a process of its own, as all stories: the time base is fetched once in the life of a process.
TEST(TouchesOfStoriesTest, HaveTrueReasonsAndAlternatives) {
    EXPECT_EXIT(checkStories(), testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace VeltoTouch::Tests
