#include "Velto/Daemon/EventLoop.h"

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using namespace std::chrono_literals;

TEST(EventLoopTest, ATimerGoesOnAtItsIntervalAndARunEndsInItsTime) {
    constexpr auto kInterval = 100ms;
    EventLoop loop;
    int count = 0;
    std::chrono::steady_clock::time_point first;
    loop.addTimer(kInterval, [&] {
        if (++count == 1)
            first = std::chrono::steady_clock::now();
        else if (count == 4)
            loop.stop();
    });
    loop.run(20s);
    EXPECT_EQ(count, 4);
    EXPECT_GE(std::chrono::steady_clock::now() - first, 3 * kInterval);

    const auto start = std::chrono::steady_clock::now();
    EventLoop idle;
    idle.run(kInterval);
    EXPECT_GE(std::chrono::steady_clock::now() - start, kInterval) << "as long as it may, without a stop";
}

TEST(EventLoopTest, BlocksRunInOrderUntilTheStopAndWhatTheyThrowIsPassedOn) {
    EventLoop loop;
    std::string order;
    loop.addTimer(1ms, [&] { order += 't'; });
    loop.post([&] {
        order += 'a';
        loop.post([&] { throw std::runtime_error(order); });
        std::this_thread::sleep_for(5ms);
    });
    std::thread([&] { loop.post([&] { order += 'b'; }); }).join();
    try {
        loop.run();
        FAIL() << "nothing was passed on";
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), testing::StartsWith("ab"));
    }
    EventLoop stopped;
    stopped.post([&] { order = "the last"; });
    stopped.stop();
    stopped.run();
    EXPECT_EQ(order, "the last");
}

} // namespace
} // namespace VeltoTouch::Tests
