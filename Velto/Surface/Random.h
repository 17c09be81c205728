#pragma once

#include <cstdint>
#include <random>

namespace VeltoTouch::Surface {

// Random numbers that are the same on every compiler and library for the same seed; the standard's distributions are
// not.
class Random {
public:
    explicit Random(std::uint64_t seed) : _engine(seed) {}

    // Returns 0 to count - 1; `count` is at least 1. Some numbers are favoured by less than one in 2^32 / count.
    [[nodiscard]] std::uint32_t below(std::uint32_t count) {
        return static_cast<std::uint32_t>(((_engine() >> 32U) * count) >> 32U);
    }

    // Returns a number from `low` to `high`, both included; `high - low` is below 2^32 - 1.
    [[nodiscard]] std::int64_t between(std::int64_t low, std::int64_t high) {
        return low + below(static_cast<std::uint32_t>(high - low) + 1);
    }

    // Returns a number between `low` and `high`, in thousandths of their distance.
    [[nodiscard]] double within(double low, double high) {
        return low + (high - low) * static_cast<double>(below(1001)) / 1000.0;
    }

private:
    std::mt19937_64 _engine;
};

} // namespace VeltoTouch::Surface
