#include "Tests/Support/TestDevice.h"

#include <array>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::Ne;

// What a service sees of a device (options, properties, feature reports, IDs and lengths of reports, a device that goes
// or cannot be read) its own tests tell, which go through the same calls.

TEST(HIDDeviceTest, AHandleIsNeverGivenAgain) {
    const auto backend = makeRef<TestDevice>();
    const io_service_t still = registerDevice(makeRef<TestDevice>());
    const io_service_t handle = registerDevice(backend);
    auto device = IOHIDDeviceCreate(nullptr, handle);
    unregisterDevice(handle);
    unregisterDevice(handle); // which it has no more
    EXPECT_FALSE(IOHIDDeviceCreate(nullptr, handle) || IOHIDDeviceCreate(nullptr, 0));
    const io_service_t next = registerDevice(makeRef<TestDevice>());
    EXPECT_THAT(next, AllOf(Ne(0U), Ne(still), Ne(handle)));
    unregisterDevice(next);
    unregisterDevice(still);

    EXPECT_EQ(IOHIDDeviceOpen(device.get(), 1), kIOReturnSuccess);
    EXPECT_EQ(CFGetRetainCount(backend.get()), 2);
    device = nullptr;
    EXPECT_EQ(CFGetRetainCount(backend.get()), 1);
}

// A device with a buffer for its reports, and the reports that its callback was given.
class ScheduledDeviceTest : public testing::Test {
protected:
    const Ref<TestDevice> backend = makeRef<TestDevice>();
    const io_service_t service = registerDevice(backend);
    const Ref<HIDDevice> device = IOHIDDeviceCreate(nullptr, service);
    const Ref<String> mode = makeRef<String>("Reports");
    std::array<std::uint8_t, 4> buffer{};
    std::vector<TestDevice::Report> received;

    void TearDown() override { unregisterDevice(service); }

    static void keep(void* context, IOReturn result, void* sender, IOHIDReportType type, std::uint32_t reportID,
                     std::uint8_t* report, CFIndex length, std::uint64_t timeStamp) {
        auto& test = *static_cast<ScheduledDeviceTest*>(context);
        EXPECT_EQ(result, kIOReturnSuccess);
        EXPECT_EQ(sender, test.device.get());
        EXPECT_EQ(type, kIOHIDReportTypeInput);
        EXPECT_EQ(reportID, length == 0 ? 0U : test.buffer[0]) << "of an empty one, not what the last one has left";
        EXPECT_EQ(report, test.buffer.data());
        EXPECT_EQ(timeStamp, TestDevice::kStamp);
        test.received.emplace_back(report, report + length);
    }
    void schedule(IOHIDReportWithTimeStampCallback callback, IOHIDDeviceRef which) {
        IOHIDDeviceRegisterInputReportWithTimeStampCallback(which, buffer.data(), 4, callback, this);
        IOHIDDeviceScheduleWithRunLoop(which, CFRunLoopGetCurrent(), mode.get());
    }
    void unschedule(IOHIDDeviceRef which) const {
        IOHIDDeviceUnscheduleFromRunLoop(which, CFRunLoopGetCurrent(), mode.get());
    }
    [[nodiscard]] CFRunLoopRunResult run() const { return CFRunLoopRunInMode(mode.get(), 0, true); }
};

TEST_F(ScheduledDeviceTest, ReportsAreCutToTheBufferAndKeptWhileUnscheduled) {
    schedule(keep, device.get());
    backend->deliver({0x20, 1});
    backend->deliver({0x21, 2, 3, 4, 5});
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    EXPECT_THAT(received, ElementsAre(ElementsAre(0x20, 1)));
    unschedule(device.get());
    EXPECT_EQ(run(), kCFRunLoopRunFinished);
    schedule(keep, device.get());
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    backend->deliver({});
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    EXPECT_EQ(run(), kCFRunLoopRunTimedOut);
    EXPECT_THAT(received, ElementsAre(ElementsAre(0x20, 1), ElementsAre(0x21, 2, 3, 4), ElementsAre()));
    EXPECT_EQ(backend->deliveredReports(), 3U);
    unschedule(device.get());
}

TEST_F(ScheduledDeviceTest, WithoutACallbackReportsAreDropped) {
    schedule(keep, nullptr);
    unschedule(nullptr);
    EXPECT_EQ(run(), kCFRunLoopRunFinished);
    schedule(nullptr, device.get());
    backend->deliver({1});
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    EXPECT_EQ(backend->deliveredReports(), 0U);
    unschedule(device.get());
}

} // namespace
} // namespace VeltoTouch::Tests
