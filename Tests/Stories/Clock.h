#pragma once

#include "Platform/Clock.h"

#include <cstdint>
#include <vector>

// The host clock of the stories' programs, which stands in for the platform's: it stands still until it is set, has any
// time base, and notes pauses in place of waiting.

namespace VeltoTouch::Tests {

struct StoryClock {
    std::uint64_t ticks = 0;
    mach_timebase_info_data_t timebase{.numer = 1, .denom = 1}; // to be set before the first conversion
    std::vector<std::uint64_t> pausesUs;
};

// The one of this process. One thread at a time.
[[nodiscard]] StoryClock& storyClock() noexcept;

} // namespace VeltoTouch::Tests
