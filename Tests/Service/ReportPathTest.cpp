#include "Platform/Testing/LogCapture.h"
#include "Platform/Testing/TraceCapture.h"
#include "Tests/Support/TestHost.h"

#include <thread>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;
using testing::FieldsAre;
using testing::Matcher;
using testing::StartsWith;

using Line = LogCapture::Line;

Matcher<Line> debug(const Matcher<std::string>& message) { return FieldsAre("HIDService", OS_LOG_TYPE_DEBUG, message); }
Matcher<Line> received(int reportID, std::size_t length) {
    return debug(fmt::format("Received input report (type 0, reportID {}, reportLength {}, timestampMach {})", reportID,
                             length, TestDevice::kStamp));
}

class ReportPathTest : public testing::Test {
protected:
    ReportPathTest() {
        host.schedule();
        device->deliverAndWait({}); // by now the thread is under way
    }

    // What is logged and traced while a report goes its way, to the host's callback.
    std::vector<Line> logOf(const Report& report) {
        const LogCapture log(OS_LOG_TYPE_DEBUG);
        device->deliverAndWait(report);
        host.drain();
        auto lines = log.lines();
        std::erase_if(lines, [](const Line& line) { return line.category != "HIDService"; });
        return lines;
    }

    const Ref<TestDevice> device = makeRef<TestDevice>();
    TestHost host{device};
};

TEST_F(ReportPathTest, ReportsAreLoggedWithWhatTheyTurnOutToBe) {
    const Report image = imageReport(makeImage(7, 1000, {}));
    EXPECT_THAT(logOf(image),
                ElementsAre(received(1, image.size()), debug("Input report probe"), debug("Received image frame: 7")));
    const Report later = imageReport(makeImage(9, 1010, {}));
    EXPECT_THAT(logOf(later),
                ElementsAre(received(1, later.size()), debug("Input report probe"), debug("Received image frame: 9"),
                            FieldsAre("HIDService", OS_LOG_TYPE_ERROR, "Disjoint image (frame number: 7 -> 9)\n\n")));
    EXPECT_THAT(logOf({}),
                ElementsAre(received(0, 0), debug("Input report probe"), debug("Invalid input report len==0")));
    EXPECT_THAT(logOf({0x2A, 1}),
                ElementsAre(received(42, 2), debug("Input report probe"), debug("Invalid input report with ID 42")));
}

TEST_F(ReportPathTest, AFirmwareResetIsLoggedOnItsWayToTheHostsCallback) {
    Report reset = firmwareEventReport(InputReport::FirmwareEvent::kReset);
    reset[2] = 0x01;
    reset[9] = 0xFF;
    host.whenCalled = [] { os_log_with_type(os_log_create("host", "HIDService"), OS_LOG_TYPE_DEBUG, "called"); };
    const auto notice = [](const auto& text) { return FieldsAre("HIDService", OS_LOG_TYPE_DEFAULT, text); };
    EXPECT_THAT(logOf(reset), ElementsAre(received(2, reset.size()), debug("Input report probe"),
                                          notice("Firmware event probe; event: 0, context: 1000000000000ff"),
                                          debug("HID events probe: 1 event(s)"), debug("Dispatch 1 event(s) takeoff"),
                                          debug("Dispatch 1 event(s) land"),
                                          notice(StartsWith("Dispatch event: <vendor")), debug("called")));
    EXPECT_THAT(host.events(), ElementsAre(FirmwareReset()));
}

TEST_F(ReportPathTest, TracePointsMarkReportBatchAndEvents) {
    const auto tracedBy = [this](const Report& report) {
        const TraceCapture trace;
        device->deliverAndWait(report);
        host.drain();
        return trace.points();
    };
    using Point = TraceCapture::Point;
    EXPECT_THAT(tracedBy({}), ElementsAre(Point{0x2B150180, 0, 0, 0, 0}));
    device->deliverAndWait(Report(8, 0x55)); // stays in the buffer behind the next one
    EXPECT_THAT(tracedBy({0x09, 0x08, 0x07}), ElementsAre(Point{0x2B150180, 9, 8, 7, 0}));
    Report event = firmwareEventReport(3);
    event[9] = 0x10;
    EXPECT_THAT(tracedBy(event), ElementsAre(Point{0x2B150180, 2, 3, 0, 0}, Point{0x2B15018C, 3, 0x10, 0, 0}));

    for (const Report& report : reportsOf({"hold:volume-up"})) { // until it is a hold
        device->deliverAndWait(report);
        if (host.events().size() == 2)
            break;
    }
    EXPECT_THAT(tracedBy(firmwareEventReport(InputReport::FirmwareEvent::kReset)),
                ElementsAre(Point{0x2B150180, 2, 0, 0, 0}, Point{0x2B15018C, 0, 0, 0, 0}, Point{0x2B150184, 2, 0, 0, 0},
                            Point{0x2B150188, 11, kIOHIDEventPhaseEnded, 0, 0}, Point{0x2B150188, 1, 0, 0, 0}));
}

TEST_F(ReportPathTest, TheRecordingIsTrimmedAtTwiceItsBound) {
    for (int i = 0; i < 8697; ++i)
        device->deliver({9});
    device->deliverAndWait({9});
    EXPECT_EQ(host.recording().frames().size(), 4350U) << "8699 when read, and bounded by being written out";
    device->deliverAndWait({9});
    device->deliverAndWait({8});
    const PipelineRecording recorded = host.recording();
    EXPECT_EQ(recorded.frames().size(), 4350U);
    EXPECT_EQ(recorded.frames().back().report, Report{8});
}

// A value that stops whoever destroys it: here the trimming of the recording, under the lock.
class Gate final : public Value {
public:
    Gate(Ref<DispatchSemaphore> isReached, Ref<DispatchSemaphore> mayGoOn)
        : Value(Kind::Null), _isReached(std::move(isReached)), _mayGoOn(std::move(mayGoOn)) {}
    ~Gate() override {
        _isReached->signal();
        _mayGoOn->wait();
    }

private:
    const Ref<DispatchSemaphore> _isReached;
    const Ref<DispatchSemaphore> _mayGoOn;
};

TEST_F(ReportPathTest, WhatWaitsForTheLockGetsTheTimeAtWhichItHasIt) {
    const auto isReached = dispatch_semaphore_create(0);
    const auto mayGoOn = dispatch_semaphore_create(0);
    host.set("Pipeline.Gate", makeRef<Gate>(isReached, mayGoOn));
    host.set("Pipeline.Gate", nullptr); // the first is of no use now
    for (int i = 0; i < 2 * 4350 - 5; ++i)
        device->deliver({8});
    device->deliverAndWait({8});
    std::thread trimming([&] { host.set("Pipeline.Full", nullptr); });
    isReached->wait();
    const LogCapture log(OS_LOG_TYPE_DEBUG);
    std::thread writing([&] { host.set("Pipeline.Late", nullptr); });
    device->deliver({9});
    while (log.lines().size() < 2) // each is logged before the lock is asked for
        std::this_thread::yield();
    usleep(1000); // a service that reads the clock too early has read it by then
    const std::uint64_t unlocked = mach_absolute_time();
    mayGoOn->signal();
    trimming.join();
    writing.join();
    device->deliverAndWait({});
    const PipelineRecording recorded = host.recording();
    std::vector<std::uint64_t> late;
    for (const Frame& frame : recorded.frames()) {
        if (frame.key == "Late" || frame.report == Report{9})
            late.push_back(frame.timestampNs);
    }
    EXPECT_THAT(late, ElementsAre(testing::Ge(unlocked), testing::Ge(unlocked)));
}

TEST_F(ReportPathTest, ReportsOfAnyLengthAreRecordedUpToTheBuffer) {
    const std::vector<std::size_t> lengths{1, 91, 511, 512, 513, 4000};
    for (const std::size_t length : lengths)
        device->deliverAndWait(Report(length, 0x55));
    std::vector<std::size_t> recorded;
    for (const PipelineRecording all = host.recording(); const Frame& frame : all.frames())
        recorded.push_back(frame.report.size());
    EXPECT_THAT(recorded, ElementsAre(0, 1, 91, 511, 512, 512, 512));
}

} // namespace
} // namespace VeltoTouch::Tests
