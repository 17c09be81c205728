#include "Fuzz/Require.h"
#include "Tests/Stories/Comparison.h"
#include "Tests/Stories/Containers.h"
#include "Tests/Stories/Teller.h"

#include <array>
#include <iostream>
#include <vector>

// The bytes choose a story of what happens to a recording with a pipeline behind it, or a container of one that may be
// damaged. Promise: the system makes the same of it as the reference.

using namespace VeltoTouch::Tests;

namespace {

void requireSameStory(Choices& choices) {
    constexpr std::size_t kMostSteps = 6; // more find nothing new and cost time
    constexpr std::uint32_t kMostImages = 2;
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

// A stack of every allocation takes longer than a frame, and so do freed bytes that have left the cache.
extern "C" const char* __asan_default_options() {
    return "malloc_context_size=0:quarantine_size_mb=1:intercept_memcmp=0";
}

// Inputs as long as a story of so few steps, and no bookkeeping that takes as long as the story. Leaks are found by the
// stories' test. What the caller says holds instead.
extern "C" int LLVMFuzzerInitialize(int* argumentCount, char*** arguments) {
    static std::array<char[18], 3> usual{"-max_len=128", "-detect_leaks=0", "-entropic=0"};
    static auto& all = *new std::vector<char*>(*arguments, *arguments + *argumentCount + 1); // with the null at the end
    for (char* argument : usual)
        all.insert(all.begin() + 1, argument);
    *argumentCount += static_cast<int>(usual.size());
    *arguments = all.data();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    Choices choices({bytes, size});
    if (choices.oneIn(4))
        requireSameContainer(choices);
    else
        requireSameStory(choices);
    return 0;
}
