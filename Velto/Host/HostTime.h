#pragma once

#include <chrono>
#include <cstdint>

namespace VeltoTouch {

// A time of the host's monotonic clock, or the span between two. Unsigned: a recording may hold any time.
using HostTime = std::chrono::duration<std::uint64_t, std::nano>;

// Converts ticks of the clock; a span wraps if its nanoseconds do not fit. Any thread.
[[nodiscard]] HostTime hostTimeOf(std::uint64_t ticks) noexcept;

[[nodiscard]] HostTime hostTimeNow() noexcept;

// A time for people, with fractions.
using Seconds = std::chrono::duration<double>;
using Milliseconds = std::chrono::duration<double, std::milli>;

} // namespace VeltoTouch
