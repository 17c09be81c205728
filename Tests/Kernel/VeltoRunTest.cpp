#include "Surface/Scripts.h"
#include "Surface/Simulation.h"
#include "Tests/Kernel/VirtualDevice.h"
#include "Tests/Support/Program.h"

#include <string>
#include <thread>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

// The program opens the device twice, first to ask what it is. From the second time on the kernel keeps reports for it.
constexpr int kOpenedForReports = 2;
constexpr std::size_t kKernelsRoom = 63;

std::vector<VirtualDevice::Report> reportsOf(std::string_view step) {
    std::vector<VirtualDevice::Report> reports;
    Surface::Simulation simulation({}, Surface::scriptOf({Surface::parseStep(step)}));
    while (const auto report = simulation.next())
        reports.emplace_back(report->bytes().begin(), report->bytes().end());
    return reports;
}

// A surface that is touched as soon as the program has opened it.
class VeltoRunTest : public testing::Test {
protected:
    VirtualDevice surface;

    // Runs the program while the reports come and then, if so wanted, the surface goes.
    [[nodiscard]] Outcome run(const std::vector<VirtualDevice::Report>& reports, bool unplugged,
                              const Arguments& options) {
        EXPECT_LE(reports.size(), kKernelsRoom) << "so that all are kept, however late the program is";
        std::thread finger([&] {
            if (!surface.waitUntilOpened(kOpenedForReports))
                return;
            for (const auto& report : reports)
                surface.send(report);
            if (unplugged)
                surface.unplug();
        });
        Arguments arguments{"run", "--device", surface.path(), "--jsonl"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Outcome outcome = velto().run(arguments);
        finger.join();
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_THAT(outcome.output, HasSubstr("\"reports\":" + std::to_string(reports.size()) + ","));
        return outcome;
    }
};

TEST_F(VeltoRunTest, ATapIsSeenAndPropertiesAreTheDevices) {
    surface.answer(kIOHIDReportTypeFeature, 0x1F, {0x1F, 0x88, 0x13, 0x00, 0x00});
    const Outcome outcome = run(reportsOf("tap:play-pause"), false,
                                {"--duration", "3", "--get", "FactoryResetHoldDuration", "--get", "Product"});
    EXPECT_THAT(outcome.output, ContainsRegex(R"("gesture":"tap",.*"region":"PlayPause")"));
    EXPECT_THAT(outcome.output, HasSubstr(R"("key":"FactoryResetHoldDuration","value":5000})"));
    EXPECT_THAT(outcome.output, HasSubstr(R"("key":"Product","value":"Virtual Touch Surface"})"));
}

// Without an end by time: if it did not end by itself, the virtual machine's time would run out.
TEST_F(VeltoRunTest, UnpluggedInTheMiddleOfATouchTheRunEnds) {
    auto reports = reportsOf("hold:volume-up");
    reports.resize(kKernelsRoom);
    const Outcome outcome = run(reports, true, {});
    EXPECT_THAT(outcome.output, ContainsRegex(R"("gesture":"mayBegin",.*"region":"VolumeUp")"));
    EXPECT_THAT(outcome.output, Not(HasSubstr("holdEnd")));
}

} // namespace
} // namespace VeltoTouch::Tests
