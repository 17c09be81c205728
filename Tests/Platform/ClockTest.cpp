#include "Platform/Clock.h"

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

TEST(ClockTest, ASleepLastsAtLeastAsLongAsAskedFor) {
    for (const std::uint64_t microseconds : {1U, 2'500U}) {
        const std::uint64_t start = mach_absolute_time();
        usleep(microseconds);
        EXPECT_GE(mach_absolute_time() - start, microseconds * 1000);
    }
}

} // namespace
} // namespace VeltoTouch::Tests
