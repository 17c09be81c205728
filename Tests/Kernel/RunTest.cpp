#include "Tests/Kernel/Touches.h"
#include "Tests/Kernel/VirtualSensor.h"
#include "Tests/Support/Program.h"

#include <sys/stat.h>

namespace VeltoTouch::Tests {
namespace {

using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

// Runs the program while these reports come to the surface, which goes when the program has written a line with this
// text; gives what the program has written.
std::string run(VirtualDevice& surface, const std::vector<VirtualDevice::Report>& reports, const Arguments& options,
                const std::string& unpluggedAfter = "(never)") {
    EXPECT_LE(reports.size(), kKernelsRoom) << "so that all are kept, however late the program is";
    const TemporaryFolder folder;
    const std::string pipe = folder.path("output");
    EXPECT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    std::string output;
    std::thread finger([&] {
        std::ifstream lines(pipe);
        if (surface.waitUntilOpened(kOpenedForReports))
            std::ranges::for_each(reports, [&](const auto& report) { surface.send(report); });
        for (std::string line; std::getline(lines, line); output += line + "\n") {
            if (line.find(unpluggedAfter) != std::string::npos)
                surface.unplug();
        }
    });
    Arguments arguments{"run", "--jsonl", "--device"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Outcome outcome = velto().writingTo(pipe).run(arguments);
    finger.join();
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_THAT(output, HasSubstr("\"reports\":" + std::to_string(reports.size()) + ","));
    return output;
}

// On the first surface, and with an accelerometer, whose samples around the touch are recorded.
TEST(RunTest, ATapIsSeenAndPropertiesAreTheDevices) {
    VirtualSensor sensor({100, -200, 1000});
    VirtualDevice surface;
    surface.answer(kIOHIDReportTypeFeature, 0x1F, {0x1F, 0x88, 0x13, 0x00, 0x00});
    const TemporaryFolder folder;
    const std::string recording = folder.path("recording.json");
    EXPECT_THAT(run(surface, reportsOf({"tap:play-pause"}),
                    {"surface", "--duration", "3", "--record", recording, "--get", "FactoryResetHoldDuration", "--get",
                     "Product"}),
                AllOf(ContainsRegex(R"("gesture":"tap",.*"region":"PlayPause")"),
                      HasSubstr(R"("key":"FactoryResetHoldDuration","value":5000})"),
                      HasSubstr(R"("key":"Product","value":"Virtual Touch Surface"})")));
    EXPECT_THAT(contentOf(recording), HasSubstr(R"("Accel")"));
    EXPECT_EQ(sensor.intervalMs(), 10U);
}

// Without an end by time: if it did not end by itself, the virtual machine's time would run out.
TEST(RunTest, UnpluggedInTheMiddleOfATouchTheRunEnds) {
    VirtualDevice surface;
    auto reports = reportsOf({"hold:volume-up"});
    reports.resize(kKernelsRoom);
    EXPECT_THAT(run(surface, reports, {surface.path()}, R"("gesture":"mayBegin")"),
                AllOf(HasSubstr(R"("region":"VolumeUp")"), Not(HasSubstr("holdEnd"))));
}

} // namespace
} // namespace VeltoTouch::Tests
