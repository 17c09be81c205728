#pragma once

#include <chrono>
#include <cstdint>

namespace VeltoTouch {

// A time of the host's monotonic clock, or the span between two. Unsigned: a recording may hold any time.
using HostTime = std::chrono::duration<std::uint64_t, std::nano>;

// Converts ticks of the clock. The product with the timebase wraps at 2^64. Any thread.
[[nodiscard]] HostTime hostTimeOf(std::uint64_t ticks) noexcept;

// Returns the present time. Any thread.
[[nodiscard]] HostTime hostTimeNow() noexcept;

// Times for people, with fractions.
using Seconds = std::chrono::duration<double>;
using Milliseconds = std::chrono::duration<double, std::milli>;

} // namespace VeltoTouch
