#pragma once

#include <cstdint>

// Host clock ticks and nanoseconds, both unsigned 64-bit. Any thread.

namespace VeltoTouch::Util {

// Convert between the host clock's ticks and nanoseconds; 0 if the clock's timebase has a part that is 0. The timebase
// is fetched once, by the first call of either, and never again.
[[nodiscard]] std::uint64_t machTimeFromNanoseconds(std::uint64_t nanoseconds) noexcept;
[[nodiscard]] std::uint64_t nanosecondsFromMachTime(std::uint64_t ticks) noexcept;

// time * multiplier / divisor. The product wraps at 2^64, the quotient is truncated; 0 if the divisor is 0.
[[nodiscard]] constexpr std::uint64_t scaledTime(std::uint64_t time, std::uint32_t multiplier,
                                                 std::uint32_t divisor) noexcept {
    return divisor == 0 ? 0 : time * multiplier / divisor;
}

} // namespace VeltoTouch::Util
