#include "Platform/Clock.h"
#include "Tests/Kernel/HidrawFixture.h"

#include <ctime>
#include <thread>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class HidrawUnplugTest : public HidrawFixture {};

TEST_F(HidrawUnplugTest, UnpluggedItHandsOnTheLastReportsAndHasGone) {
    openAndStart();
    for (std::uint32_t i = 0; i < 3; ++i)
        surface.send(imageReport(makeImage(i, 10 * i, {{'E', 150}, {'F', 60}})));
    surface.unplug();
    EXPECT_EQ(CFRunLoopRunInMode(mode.get(), kPatienceSeconds, false), kCFRunLoopRunFinished);
    EXPECT_EQ(received.reports.size(), 3U);
    EXPECT_EQ(removals, 1);
    EXPECT_EQ(run(), kCFRunLoopRunFinished);
    EXPECT_EQ(ask(0x1F), (Answer{kIOReturnNoDevice, {}}));
    EXPECT_EQ(ask(1, 128, kIOHIDReportTypeInput), (Answer{kIOReturnNoDevice, {}}));
    start();
    EXPECT_EQ(run(), kCFRunLoopRunFinished) << "one that has gone adds no source";
    device->close(0);
    EXPECT_EQ(device->open(0), kIOReturnNoDevice);
    EXPECT_EQ(removals, 1);
}

TEST_F(HidrawUnplugTest, UnpluggedWhileTheLoopWaitsItTakesNoTimeAfterwards) {
    openAndStart();
    std::thread puller([&] { surface.unplug(); });
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    puller.join();
    EXPECT_EQ(removals, 1);
    // Something else keeps the loop waiting.
    const RunLoopSource timer =
        RunLoop::current().addTimer(mode->text(), mach_absolute_time() + 500'000'000'000, [] { return std::nullopt; });
    const std::clock_t before = std::clock();
    EXPECT_EQ(run(1), kCFRunLoopRunTimedOut);
    EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 10) << "of a second";
    EXPECT_EQ(removals, 1);
}

TEST_F(HidrawUnplugTest, PluggedInAgainItIsAnotherDevice) {
    openAndStart();
    const std::string& oldPath = surface.path();
    surface.unplug();
    VirtualDevice again;
    EXPECT_NE(again.path(), oldPath) << "the kernel keeps the name while the old node is open";
    const auto next = makeRef<HidrawDevice>(again.path());
    ASSERT_EQ(next->open(0), kIOReturnSuccess);
    Reports ofNext;
    const RunLoopSource nextSource = next->startReports(RunLoop::current(), mode->text(), ofNext);
    again.send(imageNumber(7));
    while ((ofNext.reports.empty() || removals == 0) && run() == kCFRunLoopRunHandledSource) {
    }
    EXPECT_THAT(ofNext.reports, ElementsAre(imageNumber(7)));
    EXPECT_THAT(received.reports, IsEmpty());
    EXPECT_EQ(removals, 1);
    device->close(0); // sets the name free
    const VirtualDevice underTheOldName;
    ASSERT_EQ(underTheOldName.path(), oldPath);
    EXPECT_EQ(device->open(0), kIOReturnNoDevice) << "though it looks the same";
}

TEST_F(HidrawUnplugTest, ANodeThatIsAnotherDevicesByNowIsNotOpened) {
    surface.unplug(); // nobody has it open, so that its name is free
    const VirtualDevice another({.product = "Another", .serialNumber = "K-2"});
    ASSERT_EQ(another.path(), surface.path());
    EXPECT_EQ(device->open(0), kIOReturnNoDevice);
    EXPECT_EQ(ask(0x1F).status, kIOReturnNotOpen);
}

} // namespace
} // namespace VeltoTouch::Tests
