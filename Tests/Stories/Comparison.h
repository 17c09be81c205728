#pragma once

#include "Tests/Stories/Story.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace VeltoTouch::Tests {

// What came of a story.
struct Comparison {
    std::string difference;   // the first one between the system and the reference; empty if they agree
    std::uint64_t frames = 0; // images recorded and frames played, after each of which all was compared
};

// Tells a story to the system and to the reference, step by step, and compares after each image and each step whatever
// can be seen: pixels, groups, hand and counters (floats by their bits, NaN as equal), what the callbacks are handed
// and in which order, log lines, values read, frames recorded, pauses of playback. Uses the process's StoryClock.
[[nodiscard]] Comparison compare(const Story& story);

// Reads a container with both: the frames or the refusals must be the same; then plays it through both and writes it.
[[nodiscard]] Comparison compareContainer(std::string_view text);

// The shortest one found that still gives a difference.
[[nodiscard]] Story shortened(Story story);
[[nodiscard]] std::string shortened(std::string container);

} // namespace VeltoTouch::Tests
