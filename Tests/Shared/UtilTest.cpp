#include "Shared/Util.h"

#include <limits>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

TEST(TimeTest, ScalingTruncatesAndWrapsBeforeItDivides) {
    constexpr auto kMax = std::numeric_limits<std::uint64_t>::max();
    struct Row {
        const char* name;
        std::uint64_t time;
        std::uint32_t multiplier, divisor;
        std::uint64_t scaled;
    };
    const Row rows[]{
        {"multiplies before it divides, and truncates", 2, 125, 3, 83},
        {"largest product that fits", kMax / 125, 125, 3, 6148914691236517166},
        {"first product that wraps", kMax / 125 + 1, 125, 3, 3},
        {"64-bit divisor arithmetic", kMax, 1, std::numeric_limits<std::uint32_t>::max(), 0x100000001},
        {"no divisor", 7, 125, 0, 0},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Util::scaledTime(row.time, row.multiplier, row.divisor), row.scaled) << row.name;
}

TEST(KeyDomainTest, IsStrippedWithItsDotOnlyWhereTheKeyBeginsWithBoth) {
    const std::pair<std::string, std::string> rows[]{
        {"Algs.HoldTimeoutMilliseconds", "HoldTimeoutMilliseconds"},
        {"Algs.", ""},
        {"Algs.Algs.x", "Algs.x"},
        {"Pipeline.Algs.x", "Pipeline.Algs.x"},
        {"Algs", "Algs"},
        {"Algsx.y", "Algsx.y"},
        {"algs.x", "algs.x"},
    };
    for (const auto& [key, left] : rows) {
        std::string rest = key;
        EXPECT_EQ(Util::stripDomainFromKey(rest, "Algs"), left != key) << key;
        EXPECT_EQ(rest, left);
    }
}

} // namespace
} // namespace VeltoTouch::Tests
