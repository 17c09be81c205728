#pragma once

#include <cstdint>

namespace VeltoTouch::Tests {

constexpr double kLong = 60;                      // seconds; a run that takes so long has missed what it waited for
constexpr std::uint64_t kMillisecond = 1'000'000; // in host ticks

} // namespace VeltoTouch::Tests
