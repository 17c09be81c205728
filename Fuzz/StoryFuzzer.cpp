#include "Fuzz/Require.h"
#include "Tests/Stories/Comparison.h"
#include "Tests/Stories/Teller.h"

#include <iostream>

// The bytes choose a story of what happens to a recording with a pipeline behind it. Promise: the system tells it as
// the reference does.

using namespace VeltoTouch::Tests;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    constexpr std::size_t kMostSteps = 40; // more find nothing new and cost time
    Choices choices({bytes, size});
    const Story story = tellStory(choices, kMostSteps);
    if (!compare(story).difference.empty()) {
        const Story shorter = shortened(story);
        std::cerr << compare(shorter).difference << "\n" << textOf(shorter);
        require(false);
    }
    return 0;
}
