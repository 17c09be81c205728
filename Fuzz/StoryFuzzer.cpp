#include "Fuzz/Require.h"
#include "Tests/Stories/Comparison.h"
#include "Tests/Stories/Containers.h"
#include "Tests/Stories/Teller.h"

#include <iostream>

// The bytes choose a story of what happens to a recording with a pipeline behind it, or a container of one that may be
// damaged. Promise: the system makes the same of it as the reference.

using namespace VeltoTouch::Tests;

namespace {

void requireSameStory(Choices& choices) {
    constexpr std::size_t kMostSteps = 16; // more find nothing new and cost time
    constexpr std::uint32_t kMostImages = 3;
    const Story story = tellStory(choices, kMostSteps, kMostImages);
    if (compare(story).difference.empty())
        return;
    const Story shorter = shortened(story);
    std::cerr << compare(shorter).difference << "\n" << textOf(shorter);
    require(false);
}

void requireSameContainer(Choices& choices) {
    const std::string container = tellContainer(choices);
    if (compareContainer(container).difference.empty())
        return;
    const std::string shorter = shortened(container);
    std::cerr << compareContainer(shorter).difference << "\n" << quoted(shorter) << "\n";
    require(false);
}

} // namespace

// Long stacks of every allocation take longer than a frame.
extern "C" const char* __asan_default_options() { return "malloc_context_size=4"; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    Choices choices({bytes, size});
    if (choices.oneIn(4))
        requireSameContainer(choices);
    else
        requireSameStory(choices);
    return 0;
}
