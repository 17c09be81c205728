#include "Fuzz/Require.h"
#include "Tests/Stories/Teller.h"
#include "Tests/Stories/Touches.h"

#include <iostream>

// The bytes choose a story. Promise: what is said of its touches is true (see checkTouches).

using namespace VeltoTouch::Tests;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    constexpr std::size_t kMostSteps = 16;
    constexpr std::uint32_t kMostImages = 40;
    Choices choices({bytes, size});
    const std::size_t alternatives = choices.oneIn(16) ? 1 : 0; // they take many plays
    const Story story = tellStory(choices, kMostSteps, kMostImages);
    const TouchesCheck check = checkTouches(story, alternatives);
    if (!check.fault.empty()) {
        std::cerr << check.fault << "\n" << textOf(story);
        require(false);
    }
    return 0;
}
