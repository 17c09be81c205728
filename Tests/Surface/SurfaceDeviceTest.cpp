#include "Platform/Clock.h"
#include "Velto/Surface/Devices.h"
#include "Velto/Surface/Scripts.h"
#include "Velto/Surface/SimulatedAccelerometer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace VeltoTouch::Surface {
namespace {

using ::testing::AllOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Ge;
using ::testing::Le;

constexpr double kAtOnce = std::numeric_limits<double>::infinity(); // as a speed
constexpr double kForever = std::numeric_limits<double>::infinity();
constexpr std::uint64_t kMs = 1'000'000; // in nanoseconds, the clock's ticks

CFRunLoopRunResult runLoop(double seconds = kForever) {
    return CFRunLoopRunInMode(makeRef<String>("mode").get(), seconds, true);
}
void runToTheEnd() {
    while (runLoop() == kCFRunLoopRunHandledSource) {
    }
}

// Keeps the second byte of every report and the time at which it came.
class Reports final : public InputReportSink {
public:
    std::span<std::uint8_t> buffer() noexcept override { return _buffer; }
    void deliver(std::size_t length, std::uint64_t timeStamp) override {
        lengths.push_back(length);
        numbers.push_back(_buffer[1]);
        times.push_back(timeStamp);
        if (busyUs > 0)
            usleep(std::exchange(busyUs, 0));
    }

    std::vector<std::size_t> lengths;
    std::vector<int> numbers;
    std::vector<std::uint64_t> times;
    std::uint64_t busyUs = 0; // how long the next report takes

private:
    std::array<std::uint8_t, 4> _buffer{};
};

// Reports 01 00, 01 01, ... at these times, as a recording that holds other frames too, the last in front.
PipelineRecording recordingAt(const std::vector<std::uint64_t>& timesMs) {
    PipelineRecording recording;
    recording.setState(0, "Key", Number::withBool(true));
    recording.handleMetadata(0, "Key", Number::withBool(true));
    for (std::size_t i = timesMs.size(); i-- > 0;) {
        const std::array<std::uint8_t, 2> report{0x01, static_cast<std::uint8_t>(i)};
        recording.handleInputReport((1000 + timesMs[i]) * kMs, report.data(), report.size());
    }
    return recording;
}

class PlayedDeviceTest : public testing::Test {
protected:
    void make(const std::vector<std::uint64_t>& timesMs, double speed) {
        device = recordingPlayer(recordingAt(timesMs), speed);
        device->removalHandler = [this] { ++removals; };
    }
    void start() { source = device->startReports(RunLoop::current(), "mode", reports); }

    Reports reports;
    Ref<PlayedDevice> device;
    RunLoopSource source;
    int removals = 0;
};

TEST_F(PlayedDeviceTest, GivesOneReportACallInTheOrderOfTimeAndHasGoneAfterTheLast) {
    make({0, 5000, 10'000}, kAtOnce);
    start();
    for (std::size_t count = 1; count <= 3; ++count) {
        EXPECT_EQ(removals, 0);
        EXPECT_EQ(runLoop(), kCFRunLoopRunHandledSource);
        EXPECT_EQ(reports.numbers.size(), count);
    }
    EXPECT_THAT(reports.numbers, ElementsAre(0, 1, 2));
    EXPECT_THAT(reports.lengths, Each(2U));
    EXPECT_EQ(removals, 1);
    start();
    EXPECT_EQ(runLoop(), kCFRunLoopRunFinished) << "what has gone gives no source";
    EXPECT_EQ(removals, 1);
}

TEST_F(PlayedDeviceTest, WithoutReportsItGoesAtOnce) {
    make({}, 1);
    start();
    runToTheEnd();
    EXPECT_EQ(removals, 1);
}

TEST_F(PlayedDeviceTest, ADelayDoesNotShiftTheReportsThatFollow) {
    make({0, 20, 40, 800}, 2);
    reports.busyUs = 300'000; // a shift would make it 700 ms in all, the recording's own pace 800
    const std::uint64_t before = mach_absolute_time();
    start();
    runToTheEnd();
    ASSERT_EQ(reports.times.size(), 4U);
    EXPECT_GE(reports.times[3] - before, 400 * kMs);
    EXPECT_LT(reports.times[3] - before, 690 * kMs);
}

TEST_F(PlayedDeviceTest, GoesOnWithTheNextReportWhenItIsStartedAgain) {
    make({0, 3'600'000, 3'600'001}, 1);
    start();
    EXPECT_EQ(runLoop(), kCFRunLoopRunHandledSource);
    source = {};
    start(); // an hour earlier than it was due
    runToTheEnd();
    EXPECT_THAT(reports.numbers, ElementsAre(0, 1, 2));
    EXPECT_EQ(removals, 1);
}

TEST_F(PlayedDeviceTest, APaceThatIsNextToNothingIsNoOverflow) {
    make({0, 1}, 1e-300);
    start();
    EXPECT_EQ(runLoop(), kCFRunLoopRunHandledSource);
    EXPECT_EQ(runLoop(0.01), kCFRunLoopRunTimedOut);
}

TEST(SimulatedDeviceTest, AnswersTheControllersFeatureReportsAndARecordingNone) {
    const auto simulated = simulatedDevice(Simulation({}, scriptOf({})), 1);
    const auto recorded = recordingPlayer(recordingAt({0}), 1);
    using Bytes = std::vector<std::uint8_t>;
    const auto read = [](const Ref<PlayedDevice>& device, std::uint32_t reportID, std::size_t room = 128,
                         IOHIDReportType type = kIOHIDReportTypeFeature) {
        Bytes report(room);
        std::size_t length = 0;
        const IOReturn status = device->getReport(type, reportID, report, length);
        report.resize(length); // which may be longer than the room
        return status == kIOReturnSuccess ? report : Bytes();
    };
    for (const std::uint32_t reportID : {0x04U, 0x10U, 0x11U, 0x12U, 0x13U, 0x1DU, 0x32U, 0x3BU, 0x3CU, 0x3FU}) {
        const Bytes report = read(simulated, reportID);
        ASSERT_GE(report.size(), 2U) << reportID;
        EXPECT_EQ(report.front(), reportID);
        EXPECT_THAT(read(recorded, reportID), ElementsAre());
    }
    EXPECT_THAT(read(simulated, 0x1F), ElementsAre(0x1F, 0x88, 0x13, 0, 0));
    EXPECT_THAT(read(simulated, 0x1F, 2), ElementsAre(0x1F, 0x88, 0, 0, 0)) << "the length without the room";
    EXPECT_THAT(read(simulated, 0x05), ElementsAre());
    EXPECT_THAT(read(simulated, 0x1F, 128, kIOHIDReportTypeInput), ElementsAre());
}

TEST(SimulatedAccelerometerTest, TakesOnlyAnIntervalThatIsOne) {
    const auto accelerometer = makeRef<SimulatedAccelerometer>();
    const auto interval = [&] { return as<Number>(accelerometer->getProperty("ReportInterval"))->doubleValue(); };
    struct Row {
        double given;
        bool isTaken;
        double inForce;
    };
    for (const auto& [given, isTaken, inForce] : {
             Row{10'000, true, 10'000},
             Row{0, false, 10'000},
             Row{-5, false, 10'000},
             Row{std::nan(""), false, 10'000},
             Row{kForever, false, 10'000},
             Row{1e-9, true, kShortestReportIntervalUs},
             Row{1e30, true, kLongestReportIntervalUs},
         }) {
        EXPECT_EQ(accelerometer->setProperty("ReportInterval", Number::withDouble(given)), isTaken) << given;
        EXPECT_EQ(interval(), inForce) << given;
    }
    EXPECT_FALSE(accelerometer->setProperty("ReportInterval", makeRef<String>("5000")));
    EXPECT_FALSE(accelerometer->setProperty("PrimaryUsage", Number::withDouble(5000)));
    EXPECT_FALSE(accelerometer->getProperty("Nothing"));
}

TEST(SimulatedAccelerometerTest, GivesEveryClientTheSameGravityAtItsInterval) {
    const auto accelerometer = makeRef<SimulatedAccelerometer>();
    accelerometer->setProperty("ReportInterval", Number::withDouble(2'000));
    std::array<std::vector<double>, 2> heights;
    std::vector<RunLoopSource> sources;
    const std::uint64_t start = mach_absolute_time();
    for (std::vector<double>& values : heights) {
        const auto handler = [&values](const Ref<HIDEvent>& event) {
            EXPECT_EQ(IOHIDEventGetType(event.get()), kIOHIDEventTypeAccelerometer);
            values.push_back(IOHIDEventGetFloatValue(event.get(), kIOHIDEventFieldAccelerometerZ));
        };
        sources.push_back(accelerometer->startEvents(RunLoop::current(), "mode", handler));
    }
    while (heights[0].size() < 10 || heights[1].size() < 10)
        ASSERT_EQ(runLoop(), kCFRunLoopRunHandledSource);
    EXPECT_GE(mach_absolute_time() - start, 20 * kMs);
    sources.clear();
    EXPECT_EQ(runLoop(), kCFRunLoopRunFinished);
    EXPECT_THAT(heights[0], Each(AllOf(Ge(0.99), Le(1.01))));
    EXPECT_NE(heights[0][0], heights[0][1]) << "a tremor";
    EXPECT_TRUE(std::equal(heights[0].begin(), heights[0].begin() + 10, heights[1].begin()));
}

} // namespace
} // namespace VeltoTouch::Surface
