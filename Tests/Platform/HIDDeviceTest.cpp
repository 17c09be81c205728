#include "Tests/Support/TestDevice.h"

#include <array>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::FieldsAre;
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

// What the callback of a device was given.
struct Received {
    IOReturn result;
    void* sender;
    std::uint32_t reportID;
    TestDevice::Report report;
};

void keep(void* context, IOReturn result, void* sender, IOHIDReportType /*type*/, std::uint32_t reportID,
          std::uint8_t* report, CFIndex length, std::uint64_t /*timeStamp*/) {
    static_cast<std::vector<Received>*>(context)->push_back({result, sender, reportID, {report, report + length}});
}

TEST(HIDDeviceTest, EachReportIsASourceAndDroppedWithoutACallback) {
    const auto backend = makeRef<TestDevice>();
    const io_service_t service = registerDevice(backend);
    const auto device = IOHIDDeviceCreate(nullptr, service);
    const auto mode = makeRef<String>("Reports");
    const auto run = [&mode] { return CFRunLoopRunInMode(mode.get(), 0, true); };
    std::array<std::uint8_t, 4> buffer{};
    std::vector<Received> received;
    IOHIDDeviceRegisterInputReportWithTimeStampCallback(device.get(), buffer.data(), 4, keep, &received);
    IOHIDDeviceScheduleWithRunLoop(device.get(), CFRunLoopGetCurrent(), mode.get());
    for (const TestDevice::Report& report : {TestDevice::Report{0x20, 1}, {0x21, 2, 3, 4, 5}, {}})
        backend->deliver(report);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    EXPECT_EQ(run(), kCFRunLoopRunTimedOut);
    const auto is = [&device](std::uint32_t reportID, const TestDevice::Report& report) {
        return FieldsAre(kIOReturnSuccess, device.get(), reportID, report);
    };
    EXPECT_THAT(received, ElementsAre(is(0x20, {0x20, 1}), is(0x21, {0x21, 2, 3, 4}), is(0, {})));

    IOHIDDeviceRegisterInputReportWithTimeStampCallback(device.get(), buffer.data(), 4, nullptr, nullptr);
    backend->deliver({1});
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    EXPECT_EQ(backend->deliveredReports(), 3U);
    IOHIDDeviceUnscheduleFromRunLoop(device.get(), CFRunLoopGetCurrent(), mode.get());
    EXPECT_EQ(run(), kCFRunLoopRunFinished);
    unregisterDevice(service);
}

} // namespace
} // namespace VeltoTouch::Tests
