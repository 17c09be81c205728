#include "Tests/Kernel/Touches.h"
#include "Tests/Support/Program.h"

#include <algorithm>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <sys/stat.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

// A surface that is touched as soon as the program has opened it.
class VeltoRunTest : public testing::Test {
protected:
    VirtualDevice surface;

    // Runs the program while the reports come. The surface goes when the program has written a line with this text.
    [[nodiscard]] std::string run(const std::vector<VirtualDevice::Report>& reports, const Arguments& options,
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
        Arguments arguments{"run", "--device", surface.path(), "--jsonl"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Outcome outcome = velto().writingTo(pipe).run(arguments);
        finger.join();
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_THAT(output, HasSubstr("\"reports\":" + std::to_string(reports.size()) + ","));
        return output;
    }
};

TEST_F(VeltoRunTest, ATapIsSeenAndPropertiesAreTheDevices) {
    surface.answer(kIOHIDReportTypeFeature, 0x1F, {0x1F, 0x88, 0x13, 0x00, 0x00});
    const std::string output = run(reportsOf({"tap:play-pause"}),
                                   {"--duration", "3", "--get", "FactoryResetHoldDuration", "--get", "Product"});
    EXPECT_THAT(output, ContainsRegex(R"("gesture":"tap",.*"region":"PlayPause")"));
    EXPECT_THAT(output, HasSubstr(R"("key":"FactoryResetHoldDuration","value":5000})"));
    EXPECT_THAT(output, HasSubstr(R"("key":"Product","value":"Virtual Touch Surface"})"));
}

// Without an end by time: if it did not end by itself, the virtual machine's time would run out.
TEST_F(VeltoRunTest, UnpluggedInTheMiddleOfATouchTheRunEnds) {
    auto reports = reportsOf({"hold:volume-up"});
    reports.resize(kKernelsRoom);
    const std::string output = run(reports, {}, R"("gesture":"mayBegin")");
    EXPECT_THAT(output, HasSubstr(R"("region":"VolumeUp")"));
    EXPECT_THAT(output, Not(HasSubstr("holdEnd")));
}

} // namespace
} // namespace VeltoTouch::Tests
