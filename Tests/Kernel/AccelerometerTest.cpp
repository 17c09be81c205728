#include "Platform/Linux/IIOAccelerometer.h"

#include "Platform/Clock.h"
#include "Platform/Linux/EventReader.h"
#include "Platform/Linux/IIOSamplingFrequency.h"
#include "Tests/Kernel/VirtualSensor.h"

#include <algorithm>
#include <chrono>
#include <tuple>

#include <gmock/gmock.h>
#include <pthread.h>
#include <sched.h>

namespace VeltoTouch::Tests {
namespace {

using testing::AllOf;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::Ge;
using testing::IsEmpty;
using testing::Le;
using testing::SizeIs;

constexpr double kNewsSeconds = 20;

auto near(double g) { return DoubleNear(g, 1e-6); }

// A plugged-in accelerometer that lies on its side a little, and what it gives on the test's run loop.
class AccelerometerTest : public testing::Test {
protected:
    VirtualSensor sensor{{100, -200, 1000}};
    const std::vector<Ref<HIDEventService>> found = findAccelerometers();
    const Ref<String> mode = makeRef<String>("Accelerometer");
    std::vector<Ref<HIDEvent>> events;
    RunLoopSource source;

    void SetUp() override { ASSERT_THAT(found, SizeIs(1)); }

    bool setInterval(const Ref<Value>& microseconds) {
        return found.front()->setProperty("ReportInterval", microseconds);
    }
    [[nodiscard]] double number(const std::string& key) const {
        const Ref<Value> value = found.front()->getProperty(key);
        return as<Number>(value) == nullptr ? -1 : as<Number>(value)->doubleValue();
    }
    void start() {
        const auto keep = [this](const Ref<HIDEvent>& event) { events.push_back(event); };
        source = found.front()->startEvents(RunLoop::current(), mode->text(), keep);
    }
    // Runs until the next event.
    [[nodiscard]] bool run() {
        return CFRunLoopRunInMode(mode.get(), kNewsSeconds, true) == kCFRunLoopRunHandledSource;
    }
    // Runs until it gives values that were read from now on: it reads by itself, and two events may be on their way.
    [[nodiscard]] bool runToNewValues() { return run() && run() && run(); }
    void runUntilItHasLeft() const {
        EXPECT_EQ(CFRunLoopRunInMode(mode.get(), kNewsSeconds, false), kCFRunLoopRunFinished);
        EXPECT_THAT(findAccelerometers(), IsEmpty());
    }
    [[nodiscard]] std::vector<double> lastValues() const {
        const HIDEvent* event = events.back().get();
        return {IOHIDEventGetFloatValue(event, kIOHIDEventFieldAccelerometerX),
                IOHIDEventGetFloatValue(event, kIOHIDEventFieldAccelerometerY),
                IOHIDEventGetFloatValue(event, kIOHIDEventFieldAccelerometerZ)};
    }
};

TEST_F(AccelerometerTest, ItGivesItsValuesInGOnTheRunLoop) {
    ASSERT_TRUE(setInterval(Number::withDouble(10'000)));
    const std::uint64_t startTime = mach_absolute_time();
    start();
    ASSERT_TRUE(run());
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_EQ(IOHIDEventGetType(events.back().get()), kIOHIDEventTypeAccelerometer);
    EXPECT_THAT(IOHIDEventGetTimeStamp(events.back().get()),
                AllOf(Ge(startTime + 10'000'000), Le(mach_absolute_time())));
    EXPECT_THAT(lastValues(), ElementsAre(near(0.1), near(-0.2), near(1.0)));

    sensor.moveTo({-32767, 0, 32767});
    ASSERT_TRUE(runToNewValues());
    EXPECT_THAT(lastValues(), ElementsAre(near(-32.767), near(0), near(32.767)));

    source = {};
    EXPECT_EQ(CFRunLoopRunInMode(mode.get(), 0, true), kCFRunLoopRunFinished);
}

TEST_F(AccelerometerTest, ClientsMatchItAndTheIntervalReachesTheHardware) {
    EXPECT_EQ(number("PrimaryUsagePage"), 0xFF00);
    EXPECT_EQ(number("PrimaryUsage"), 3);
    EXPECT_FALSE(found.front()->getProperty("Colour"));

    EXPECT_TRUE(setInterval(Number::withDouble(10'000)));
    EXPECT_EQ(number("ReportInterval"), 10'000);
    start();
    ASSERT_TRUE(run());
    EXPECT_EQ(sensor.intervalMs(), 10U);
    EXPECT_EQ(sensor.sensitivity(), 0) << "so that no change is too small to be told";
    EXPECT_TRUE(setInterval(Number::withUnsignedInt(40'000)));
    ASSERT_TRUE(runToNewValues());
    EXPECT_EQ(sensor.intervalMs(), 40U);
    for (const Ref<Value>& refused : {Ref<Value>(Number::withDouble(0)), Ref<Value>(Number::withDouble(-10'000)),
                                      Ref<Value>(makeRef<String>("10000")), Ref<Value>()})
        EXPECT_FALSE(setInterval(refused));
    EXPECT_FALSE(found.front()->setProperty("Product", makeRef<String>("Another")));
    EXPECT_EQ(number("ReportInterval"), 40'000);
    EXPECT_TRUE(setInterval(Number::withDouble(1)));
    EXPECT_EQ(number("ReportInterval"), kShortestReportIntervalUs);
}

TEST_F(AccelerometerTest, UnpluggedItLeavesTheModeAndIsNotFoundAgain) {
    start();
    ASSERT_TRUE(run());
    sensor.unplug();
    runUntilItHasLeft();
    const std::size_t given = events.size();
    start();
    runUntilItHasLeft();
    EXPECT_THAT(events, SizeIs(given));
    EXPECT_TRUE(setInterval(Number::withDouble(10'000))) << "nobody is there to refuse it";
}

TEST_F(AccelerometerTest, ASensorThatFallsSilentGivesNoMadeUpValues) {
    start();
    ASSERT_TRUE(run());
    sensor.fallSilent();
    runUntilItHasLeft();
    EXPECT_THAT(lastValues(), ElementsAre(near(0.1), near(-0.2), near(1.0)));
}

TEST_F(AccelerometerTest, ASensorThatAnswersLateDoesNotHoldUpTheLoop) {
    constexpr std::chrono::milliseconds kDelay{400};
    sensor.answerAfter(kDelay);
    std::uint64_t lastTick = mach_absolute_time();
    ASSERT_TRUE(setInterval(Number::withDouble(10'000)));
    std::uint64_t longestGap = 0;
    const RunLoopSource timer = RunLoop::current().addTimer(mode->text(), 0, [&] {
        const std::uint64_t now = mach_absolute_time();
        longestGap = std::max(longestGap, now - std::exchange(lastTick, now));
        return std::optional(now + 10'000'000);
    });
    start();
    while (events.empty() && run()) {
    }
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_THAT(lastValues(), ElementsAre(near(0.1), near(-0.2), near(1.0)));
    EXPECT_LT(std::chrono::nanoseconds(longestGap), kDelay) << "of three such delays";

    const std::uint64_t endTime = mach_absolute_time(); // it is reading again, or about to
    source = {};
    EXPECT_LT(std::chrono::nanoseconds(mach_absolute_time() - endTime), kDelay);
}

// Its loop is one with real-time priority.
TEST(EventReaderPriorityTest, ItsThreadHasNone) {
    const sched_param urgent{.sched_priority = 10}, none{.sched_priority = 0};
    int policy = -1;
    ASSERT_EQ(pthread_setschedparam(pthread_self(), SCHED_RR, &urgent), 0);
    const auto mode = makeRef<String>("Events");
    const auto read = [&policy]() -> Ref<HIDEvent> {
        policy = ::sched_getscheduler(0);
        return nullptr;
    };
    const RunLoopSource source =
        startReading(RunLoop::current(), mode->text(), {.read = read, .interval = [] { return std::uint64_t{0}; }}, {});
    EXPECT_EQ(CFRunLoopRunInMode(mode.get(), kNewsSeconds, false), kCFRunLoopRunFinished);
    ASSERT_EQ(pthread_setschedparam(pthread_self(), SCHED_OTHER, &none), 0);
    EXPECT_EQ(policy, SCHED_OTHER);
}

TEST(SamplingFrequencyTest, TheNearestThatIsOfferedIsTakenInTheDriversWords) {
    struct Row {
        const char* offered;
        double wantedHz;
        const char* taken;
    };
    constexpr Row kRows[]{
        {"12.50 25 50 100\n", 99.9, "100"},
        {"12.50 25 50 100\n", 1, "12.50"},
        {"100 50 25 12.50", 1000, "100"},
        {"50 100", 75, "100"},
        {"100 50", 75, "100"},
        {" 50  -1 many 0 100", 2, "50"},
        {"[1.000000 0.500000 400.000000]\n", 100.3, "100.500000"},
        {"[1 1 400]", 1000, "400.000000"},
        {"[1 3 9]", 9, "7.000000"},
        {"[5 1 400]", 0.1, "5.000000"},
        {"[1 400]", 100, ""},
        {"[400 1 5]", 100, "400.000000"},
        {"", 100, ""},
    };
    for (const Row& row : kRows)
        EXPECT_EQ(nearestSamplingFrequency(row.offered, row.wantedHz), row.taken)
            << row.offered << ", " << row.wantedHz;
}

} // namespace
} // namespace VeltoTouch::Tests
