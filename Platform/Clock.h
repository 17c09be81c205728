#pragma once

#include <cstdint>

// The host clock. Its ticks are nanoseconds here (timebase 1/1). Only the platform layer relies on that; all others
// convert, with `Util` (Plugin/Shared/ClockConversion.h) or, above the plug-in, `hostTimeOf` (Velto/Host/HostTime.h).

namespace VeltoTouch {

struct mach_timebase_info_data_t {
    std::uint32_t numer; // nanoseconds = ticks * numer / denom
    std::uint32_t denom;
};

// Returns the monotonic host time in ticks. Any thread.
[[nodiscard]] std::uint64_t mach_absolute_time() noexcept;

// Sets `info` to what a tick is. Any thread.
void mach_timebase_info(mach_timebase_info_data_t* info) noexcept;

// Blocks the calling thread for at least `microseconds`; signals do not shorten it. Any thread.
void usleep(std::uint64_t microseconds) noexcept;

} // namespace VeltoTouch
