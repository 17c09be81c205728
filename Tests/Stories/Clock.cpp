#include "Tests/Stories/Clock.h"

namespace VeltoTouch {

Tests::StoryClock& Tests::storyClock() noexcept {
    static auto& clock = *new StoryClock;
    return clock;
}

// A program's own definitions come before those of a shared library.
std::uint64_t mach_absolute_time() noexcept { return Tests::storyClock().ticks; }
void mach_timebase_info(mach_timebase_info_data_t* info) noexcept { *info = Tests::storyClock().timebase; }
void usleep(std::uint64_t microseconds) noexcept { Tests::storyClock().pausesUs.push_back(microseconds); }

} // namespace VeltoTouch
