#include "Tests/Support/TestHost.h"

#include <thread>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

constexpr std::uint64_t kReportPeriodNs = 1'000'000;

bool isWellFormedRecording(const Value* text) {
    try {
        const PipelineRecording recording(makeRef<Data>(as<String>(text)->text()).get());
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

// Sends reports at 1 kHz from the thread that calls it.
void sendPaced(TestDevice& device, const std::vector<Report>& reports) {
    std::uint64_t due = mach_absolute_time();
    for (const Report& report : reports) {
        device.deliver(report);
        due += kReportPeriodNs;
        const std::uint64_t now = mach_absolute_time();
        if (due > now)
            usleep((due - now) / 1000);
    }
    device.deliverAndWait({}); // behind all others
}

TEST(StressTest, ReadersAndAWriterLoseNothingAtAThousandReportsASecond) {
    const auto device = makeRef<TestDevice>();
    TestHost host(device);
    host.schedule();
    const auto reports = reportsOf({"tap:play-pause", "hold:volume-up", "slide:volume-up-volume-down"});
    std::atomic<bool> isOver{false};
    std::atomic<int> malformed{0};
    std::atomic<int> readings{0};

    const auto whileReportsCome = [&](auto act) {
        return std::thread([&isOver, act]() mutable {
            do
                act();
            while (!isOver);
        });
    };
    std::vector<std::thread> hosts;
    hosts.push_back(whileReportsCome([&] {
        ++readings;
        if (!isWellFormedRecording(host.property("Recording").get()))
            ++malformed;
    }));
    hosts.push_back(whileReportsCome([&] {
        ++readings;
        const auto dump = host.property("ServicePluginDebug");
        const auto& entries = *as<Dictionary>(dump);
        if (entries.entries().size() != 5 || !isWellFormedRecording(entries.find("Recording")))
            ++malformed;
    }));
    hosts.push_back(whileReportsCome([&, count = 0]() mutable {
        host.set("Pipeline.Algs.HoldTimeoutMilliseconds", Number::withUnsignedInt(500));
        host.set(fmt::format("Pipeline.Note{}", ++count % 7), Number::withUnsignedInt(1));
        usleep(200);
    }));
    sendPaced(*device, reports);
    isOver = true;
    for (std::thread& thread : hosts)
        thread.join();

    EXPECT_EQ(device->deliveredReports(), reports.size() + 1);
    EXPECT_EQ(malformed, 0);
    EXPECT_GT(readings, 1);
    EXPECT_THAT(host.events(), testing::ElementsAre(MayBegin(PlayPause), Tap(PlayPause), MayBegin(VolumeUp),
                                                    HoldStart(VolumeUp), HoldEnd(VolumeUp), MayBegin(VolumeUp),
                                                    HoldStart(VolumeUp), HoldChange(VolumeDown), HoldEnd(VolumeDown)));
    const PipelineRecording recording = host.recording();
    const auto isReport = [](const Frame& frame) { return frame.type == Frame::Type::InputReport; };
    EXPECT_EQ(std::ranges::count_if(recording.frames(), isReport), static_cast<std::ptrdiff_t>(reports.size() + 1));
}

} // namespace
} // namespace VeltoTouch::Tests
