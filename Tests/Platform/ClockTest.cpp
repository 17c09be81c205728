#include "Platform/Clock.h"

#include <csignal>
#include <sys/time.h>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

std::uint64_t nanosecondsSlept(std::uint64_t microseconds) {
    const std::uint64_t start = mach_absolute_time();
    usleep(microseconds);
    return mach_absolute_time() - start;
}

TEST(ClockTest, NeverGoesBack) {
    std::uint64_t last = mach_absolute_time();
    for (int i = 0; i < 10'000; ++i) {
        const std::uint64_t now = mach_absolute_time();
        ASSERT_GE(now, last);
        last = now;
    }
}

TEST(ClockTest, SleepsAtLeastAsLongAsAskedForASecondAndMoreToo) {
    for (const std::uint64_t microseconds : {1U, 2'500U, 1'000'000U})
        EXPECT_GE(nanosecondsSlept(microseconds), microseconds * 1000);
}

volatile std::sig_atomic_t interruptions = 0;

TEST(ClockTest, SignalsDoNotCutASleepShort) {
    struct sigaction count {};
    struct sigaction before {};
    count.sa_handler = [](int) { interruptions = interruptions + 1; };
    sigaction(SIGALRM, &count, &before);
    const itimerval everyMillisecond{.it_interval = {.tv_sec = 0, .tv_usec = 1000},
                                     .it_value = {.tv_sec = 0, .tv_usec = 1000}};
    setitimer(ITIMER_REAL, &everyMillisecond, nullptr);
    const std::uint64_t slept = nanosecondsSlept(30'000);
    const itimerval never{};
    setitimer(ITIMER_REAL, &never, nullptr);
    sigaction(SIGALRM, &before, nullptr);
    EXPECT_GE(slept, 30'000'000U);
    EXPECT_GT(interruptions, 0);
}

} // namespace
} // namespace VeltoTouch::Tests
