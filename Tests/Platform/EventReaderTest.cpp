#include "Platform/Linux/EventReader.h"

#include "Platform/Clock.h"
#include "Platform/Dispatch.h"
#include "Tests/Platform/Times.h"

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint64_t kNever = 3'600'000 * kMillisecond;

// What is read on another thread, and what of it comes on the test's run loop.
class EventReaderTest : public testing::Test {
protected:
    const Ref<String> mode = makeRef<String>("Events");
    const Ref<DispatchSemaphore> hasBegun = dispatch_semaphore_create(0);
    const Ref<DispatchSemaphore> mayEnd = dispatch_semaphore_create(0);
    const std::shared_ptr<int> held = std::make_shared<int>(); // by the reader and the handler
    std::atomic<std::uint64_t> interval{kMillisecond};
    std::vector<double> given;
    RunLoopSource source;

    static Ref<HIDEvent> event(double value) {
        return IOHIDEventCreateAccelerometerEvent(nullptr, mach_absolute_time(), value, 0, 0, 0);
    }
    void start(std::function<Ref<HIDEvent>()> read) {
        const auto give = [this, held = held](const Ref<HIDEvent>& taken) {
            given.push_back(IOHIDEventGetFloatValue(taken.get(), kIOHIDEventFieldAccelerometerX));
        };
        EventReader reader{.read = std::move(read), .interval = [this, held = held] { return interval.load(); }};
        source = startReading(RunLoop::current(), mode->text(), std::move(reader), give);
    }
    CFRunLoopRunResult run(double seconds = kLong) const { return CFRunLoopRunInMode(mode.get(), seconds, true); }
    // Whether so many hold it, or do soon.
    [[nodiscard]] bool isHeldBy(long count) const {
        const std::uint64_t startTime = mach_absolute_time();
        while (held.use_count() != count && mach_absolute_time() - startTime < 10'000 * kMillisecond)
            usleep(100);
        return held.use_count() == count;
    }
};

TEST_F(EventReaderTest, EventsAreReadAtTheIntervalUntilThereAreNoMore) {
    std::vector<std::uint64_t> times{mach_absolute_time()};
    std::thread::id reader;
    start([&]() -> Ref<HIDEvent> {
        reader = std::this_thread::get_id();
        times.push_back(mach_absolute_time());
        interval = 3 * kMillisecond; // from the next event on
        if (times.size() < 4)
            return event(static_cast<double>(times.size()));
        hasBegun->signal(); // the end
        return nullptr;
    });
    while (run() != kCFRunLoopRunFinished) {
    }
    hasBegun->wait();
    EXPECT_TRUE(isHeldBy(1)) << "the thread has ended, and the source has gone";
    EXPECT_NE(reader, std::this_thread::get_id());
    ASSERT_EQ(times.size(), 4U);
    EXPECT_GE(times[1] - times[0], kMillisecond);
    EXPECT_GE(times[3] - times[0], (1 + 3 + 3) * kMillisecond);
    ASSERT_FALSE(given.empty());
    EXPECT_EQ(given.back(), 3) << "what was read before the end comes before it";
    EXPECT_TRUE(std::ranges::is_sorted(given));
}

TEST_F(EventReaderTest, WhatALateReadMissedIsNotMadeUpFor) {
    constexpr std::uint64_t kInterval = 5 * kMillisecond;
    interval = kInterval;
    std::vector<std::uint64_t> endTimes;
    start([&]() -> Ref<HIDEvent> {
        if (endTimes.empty())
            usleep(50'000);
        endTimes.push_back(mach_absolute_time());
        return endTimes.size() < 4 ? event(1) : nullptr;
    });
    while (run() != kCFRunLoopRunFinished) {
    }
    EXPECT_TRUE(isHeldBy(1));
    EXPECT_GE(endTimes[3] - endTimes[0], 2 * kInterval);
}

TEST_F(EventReaderTest, WhileAReadTakesItsTimeTheLoopGoesOn) {
    start([this] {
        mayEnd->wait();
        return event(1);
    });
    int ticks = 0;
    const RunLoopSource timer = RunLoop::current().addTimer(mode->text(), 0, [&] {
        if (++ticks == 20)
            mayEnd->signal();
        return std::optional(mach_absolute_time() + kMillisecond);
    });
    while (given.empty() && run() == kCFRunLoopRunHandledSource) {
    }
    EXPECT_GE(ticks, 20);
    EXPECT_THAT(given, ElementsAre(1));
    source = {};
    mayEnd->signal();
    EXPECT_TRUE(isHeldBy(1));
}

TEST_F(EventReaderTest, ALateLoopGetsTheNewestAlone) {
    start([this, count = 0]() mutable -> Ref<HIDEvent> {
        if (++count <= 10)
            return event(count);
        hasBegun->signal();
        mayEnd->wait();
        return nullptr;
    });
    hasBegun->wait();
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    EXPECT_EQ(run(0), kCFRunLoopRunTimedOut);
    EXPECT_THAT(given, ElementsAre(10));
    mayEnd->signal();
    while (run() != kCFRunLoopRunFinished) {
    }
    EXPECT_THAT(given, ElementsAre(10));
}

TEST_F(EventReaderTest, ASourceThatGoesEndsTheThreadThatWaits) {
    interval = kNever;
    std::atomic<bool> isRead{false};
    start([&] {
        isRead = true;
        return event(1);
    });
    EXPECT_TRUE(isHeldBy(3));
    source = {};
    EXPECT_TRUE(isHeldBy(1));
    EXPECT_FALSE(isRead);
}

TEST_F(EventReaderTest, ASourceThatGoesDoesNotWaitForARead) {
    start([this] {
        hasBegun->signal();
        mayEnd->wait();
        return event(1);
    });
    hasBegun->wait();
    source = {};
    EXPECT_TRUE(isHeldBy(2)) << "by the reader alone";
    EXPECT_EQ(run(0), kCFRunLoopRunFinished);
    mayEnd->signal();
    EXPECT_TRUE(isHeldBy(1)) << "it was not read again";
    EXPECT_THAT(given, IsEmpty());
}

} // namespace
} // namespace VeltoTouch::Tests
