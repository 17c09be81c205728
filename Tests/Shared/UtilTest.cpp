#include "Shared/Util.h"

#include <limits>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

constexpr auto kMax = std::numeric_limits<std::uint64_t>::max();

TEST(TimeTest, ScalingTruncatesAndWrapsBeforeItDivides) {
    struct Row {
        const char* name;
        std::uint64_t time;
        std::uint32_t multiplier, divisor;
        std::uint64_t scaled;
    };
    const Row rows[]{
        {"exact", 3, 125, 3, 125},
        {"back", 125, 3, 125, 3},
        {"multiplies before it divides", 2, 125, 3, 83},
        {"truncates to nothing", 1, 3, 125, 0},
        {"largest product that fits", kMax / 125, 125, 3, 6148914691236517166},
        {"first product that wraps", kMax / 125 + 1, 125, 3, 3},
        {"largest time", kMax, 2, 3, 6148914691236517204},
        {"64-bit divisor arithmetic", kMax, 1, std::numeric_limits<std::uint32_t>::max(), 0x100000001},
        {"no divisor", 7, 125, 0, 0},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Util::scaledTime(row.time, row.multiplier, row.divisor), row.scaled) << row.name;
}

TEST(TimeTest, TicksAndNanosecondsConvertBack) {
    for (const std::uint64_t ticks : {std::uint64_t{0}, std::uint64_t{1}, std::uint64_t{1} << 62U}) {
        EXPECT_EQ(Util::machTimeFromNanoseconds(Util::nanosecondsFromMachTime(ticks)), ticks);
        EXPECT_EQ(Util::nanosecondsFromMachTime(Util::machTimeFromNanoseconds(ticks)), ticks);
    }
}

TEST(KeyDomainTest, IsStrippedWithItsDotOnlyWhereTheKeyBeginsWithBoth) {
    struct Row {
        const char *key, *domain;
        bool stripped;
        const char* left;
    };
    const Row rows[]{
        {"Algs.HoldTimeoutMilliseconds", "Algs", true, "HoldTimeoutMilliseconds"},
        {"Algs.", "Algs", true, ""},
        {"Algs..x", "Algs", true, ".x"},
        {"Algs.Algs.x", "Algs", true, "Algs.x"},
        {"Pipeline.Algs.x", "Algs", false, "Pipeline.Algs.x"},
        {"Algs", "Algs", false, "Algs"},
        {"", "Algs", false, ""},
        {"Algs:x", "Algs", false, "Algs:x"},
        {"Algsx.y", "Algs", false, "Algsx.y"},
        {"algs.x", "Algs", false, "algs.x"},
        {"Blgs.x", "Algs", false, "Blgs.x"},
        {".x", "", true, "x"},
        {"x.y", "", false, "x.y"},
    };
    for (const Row& row : rows) {
        std::string key = row.key;
        EXPECT_EQ(Util::stripDomainFromKey(key, row.domain), row.stripped) << row.key;
        EXPECT_EQ(key, row.left) << row.key;
    }
}

} // namespace
} // namespace VeltoTouch::Tests
