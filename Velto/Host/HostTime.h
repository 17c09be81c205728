#pragma once

#include <chrono>
#include <cstdint>

namespace VeltoTouch {

// A time of the host's monotonic clock, or the span between two. Unsigned: a recording may hold any time.
using HostTime = std::chrono::duration<std::uint64_t, std::nano>;

// From the clock's ticks; spans wrap where nanoseconds do not fit. Any thread.
[[nodiscard]] HostTime hostTimeOf(std::uint64_t ticks) noexcept;

[[nodiscard]] HostTime hostTimeNow() noexcept;

// For people, who want fractions.
using Seconds = std::chrono::duration<double>;
using Milliseconds = std::chrono::duration<double, std::milli>;

} // namespace VeltoTouch
