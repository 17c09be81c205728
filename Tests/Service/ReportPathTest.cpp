#include "Platform/Log.h"
#include "Platform/Trace.h"
#include "Recording/PipelineRecording.h"
#include "Tests/Support/Frames.h"
#include "Tests/Support/TestHost.h"

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::FieldsAre;
using testing::Matcher;
using testing::MatchesRegex;
using testing::StartsWith;

using Line = LogCapture::Line;

Matcher<Line> debug(const Matcher<std::string>& message) { return FieldsAre("HIDService", OS_LOG_TYPE_DEBUG, message); }
Matcher<Line> received(int reportID, std::size_t length) {
    return debug(MatchesRegex(fmt::format(
        R"(Received input report \(type 0, reportID {}, reportLength {}, timestampMach [0-9]+\))", reportID, length)));
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

TEST_F(ReportPathTest, AFirmwareResetIsLoggedOnItsWayToTheHost) {
    Report reset = firmwareEventReport(InputReport::FirmwareEvent::kReset);
    reset[2] = 0x01;
    reset[9] = 0xFF;
    EXPECT_THAT(logOf(reset),
                ElementsAre(received(2, reset.size()), debug("Input report probe"),
                            FieldsAre("HIDService", OS_LOG_TYPE_DEFAULT,
                                      "Firmware event probe; event: 0, context: 1000000000000ff"),
                            debug("HID events probe: 1 event(s)"), debug("Dispatch 1 event(s) takeoff"),
                            debug("Dispatch 1 event(s) land"),
                            FieldsAre("HIDService", OS_LOG_TYPE_DEFAULT, StartsWith("Dispatch event: <vendor"))));
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

TEST_F(ReportPathTest, ReportsOfAnyLengthAreRecordedUpToTheBuffer) {
    const std::vector<std::size_t> lengths{1, 91, 511, 512, 513, 4000};
    for (const std::size_t length : lengths)
        device->deliverAndWait(Report(length, 0x55));
    const auto text = host.property("Recording");
    const PipelineRecording recording(makeRef<Data>(as<String>(text)->text()).get());
    std::vector<std::size_t> recorded;
    for (const Frame& frame : recording.frames())
        recorded.push_back(frame.report.size());
    EXPECT_THAT(recorded, ElementsAre(0, 1, 91, 511, 512, 512, 512));
}

TEST_F(ReportPathTest, EventsCarryTheHostTimeOfTheReportThatTheRecordingHas) {
    const std::uint64_t before = mach_absolute_time();
    for (const Report& report : reportsOf({"tap:volume-down"}))
        device->deliverAndWait(report);
    const std::uint64_t after = mach_absolute_time();
    const HIDEvents events = host.events();
    ASSERT_THAT(events, ElementsAre(MayBegin(VolumeDown), Tap(VolumeDown)));
    const auto text = host.property("Recording");
    const PipelineRecording recording(makeRef<Data>(as<String>(text)->text()).get());
    for (const Ref<HIDEvent>& event : events) {
        const std::uint64_t time = IOHIDEventGetTimeStamp(event.get());
        EXPECT_TRUE(time >= before && time <= after);
        EXPECT_TRUE(
            std::ranges::any_of(recording.frames(), [time](const Frame& frame) { return frame.timestampNs == time; }));
    }
}

} // namespace
} // namespace VeltoTouch::Tests
