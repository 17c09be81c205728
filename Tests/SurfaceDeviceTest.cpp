#include "Platform/Clock.h"
#include "Surface/Devices.h"
#include "Surface/Scripts.h"
#include "Surface/SimulatedAccelerometer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>

// The devices on a run loop, as the service opens them.

namespace VeltoTouch::Surface {
namespace {

using ::testing::AllOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Ge;
using ::testing::Le;

constexpr double kAtOnce = std::numeric_limits<double>::infinity();
constexpr double kForever = std::numeric_limits<double>::infinity();
constexpr std::uint64_t kMs = 1'000'000; // in nanoseconds, the clock's ticks

CFRunLoopRunResult runLoop(double seconds = kForever) {
    const auto mode = makeRef<String>("mode");
    return CFRunLoopRunInMode(mode.get(), seconds, true);
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
    void start() { source = device->startReports(*CFRunLoopGetCurrent(), "mode", reports); }
    void playToTheEnd() {
        while (runLoop() == kCFRunLoopRunHandledSource) {
        }
    }

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
    playToTheEnd();
    EXPECT_EQ(removals, 1);
    EXPECT_THAT(reports.numbers, ElementsAre());
}

TEST_F(PlayedDeviceTest, ReportsAreDueByTheirDistanceFromTheFirst) {
    make({0, 20, 100}, 2);
    const std::uint64_t start1 = mach_absolute_time();
    start();
    playToTheEnd();
    ASSERT_EQ(reports.times.size(), 3U);
    EXPECT_GE(reports.times[1] - start1, 10 * kMs);
    EXPECT_GE(reports.times[2] - start1, 50 * kMs);
    EXPECT_LT(reports.times[2] - start1, 100 * kMs) << "slower than its pace";
}

TEST_F(PlayedDeviceTest, ADelayDoesNotShiftWhatFollows) {
    make({0, 10, 20, 400}, 1);
    reports.busyUs = 300'000;
    start();
    playToTheEnd();
    ASSERT_EQ(reports.times.size(), 4U);
    EXPECT_LT(reports.times[2] - reports.times[0], 390 * kMs) << "late ones come at once";
    EXPECT_GE(reports.times[3] - reports.times[0], 399 * kMs);
    EXPECT_LT(reports.times[3] - reports.times[0], 600 * kMs);
}

TEST_F(PlayedDeviceTest, GoesOnWithTheNextReportWhenItIsStartedAgain) {
    make({0, 3'600'000, 3'600'001}, 1);
    start();
    EXPECT_EQ(runLoop(), kCFRunLoopRunHandledSource);
    source = {};
    EXPECT_EQ(runLoop(), kCFRunLoopRunFinished);
    start(); // an hour earlier than it was due
    playToTheEnd();
    EXPECT_THAT(reports.numbers, ElementsAre(0, 1, 2));
    EXPECT_EQ(removals, 1);
}

TEST_F(PlayedDeviceTest, APaceThatIsNextToNothingIsNoOverflow) {
    make({0, 1}, 1e-300);
    start();
    EXPECT_EQ(runLoop(), kCFRunLoopRunHandledSource);
    EXPECT_EQ(runLoop(0.01), kCFRunLoopRunTimedOut);
    EXPECT_THAT(reports.numbers, ElementsAre(0));
}

TEST(SimulatedDeviceTest, AnswersTheControllersFeatureReportsAndARecordingNone) {
    const Simulation simulation({}, scriptOf({}));
    const io_service_t simulated = registerDevice(simulatedDevice(simulation, 1));
    const io_service_t recorded = registerDevice(recordingPlayer(recordingAt({0}), 1));
    const auto read = [](io_service_t service, IOHIDReportType type, std::uint32_t reportID, CFIndex room) {
        std::array<std::uint8_t, 128> report{};
        const IOReturn status =
            IOHIDDeviceGetReport(IOHIDDeviceCreate(nullptr, service).get(), type, reportID, report.data(), &room);
        return status == kIOReturnSuccess ? std::vector(report.begin(), report.begin() + room)
                                          : std::vector<std::uint8_t>();
    };
    for (const std::uint32_t reportID : {0x04U, 0x10U, 0x11U, 0x12U, 0x13U, 0x1DU, 0x32U, 0x3BU, 0x3CU, 0x3FU}) {
        const auto report = read(simulated, kIOHIDReportTypeFeature, reportID, 128);
        ASSERT_GE(report.size(), 2U) << reportID;
        EXPECT_EQ(report.front(), reportID);
        EXPECT_THAT(read(recorded, kIOHIDReportTypeFeature, reportID, 128), ElementsAre());
    }
    EXPECT_THAT(read(simulated, kIOHIDReportTypeFeature, 0x1F, 128), ElementsAre(0x1F, 0x88, 0x13, 0, 0));
    EXPECT_THAT(read(simulated, kIOHIDReportTypeFeature, 0x1F, 2), ElementsAre(0x1F, 0x88, 0, 0, 0))
        << "the whole length, but no more than there is room";
    EXPECT_THAT(read(simulated, kIOHIDReportTypeFeature, 0x05, 128), ElementsAre());
    EXPECT_THAT(read(simulated, kIOHIDReportTypeInput, 0x1F, 128), ElementsAre());
    unregisterDevice(simulated);
    unregisterDevice(recorded);
}

TEST(SimulatedDeviceTest, GivesWhatTheSimulationGivesToItsEnd) {
    const auto simulation = [] { return Simulation({}, scriptOf({{.action = Action::Idle, .durationMs = 30}})); };
    Reports reports;
    const auto device = simulatedDevice(simulation(), kAtOnce);
    const RunLoopSource source = device->startReports(*CFRunLoopGetCurrent(), "mode", reports);
    while (runLoop() == kCFRunLoopRunHandledSource) {
    }
    Simulation same = simulation();
    std::vector<std::size_t> lengths;
    while (const auto report = same.next())
        lengths.push_back(report->length);
    EXPECT_EQ(reports.lengths, lengths);
    EXPECT_EQ(reports.numbers.front(), int{Simulation::kStartFrame});
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
             Row{1e-9, true, SimulatedAccelerometer::kShortestIntervalUs},
             Row{1e30, true, SimulatedAccelerometer::kLongestIntervalUs},
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
        sources.push_back(accelerometer->startEvents(*CFRunLoopGetCurrent(), "mode", handler));
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
