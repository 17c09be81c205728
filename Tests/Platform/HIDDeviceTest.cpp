#include "Platform/Log.h"
#include "Tests/Support/TestDevice.h"

#include <array>
#include <limits>
#include <thread>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;
using testing::FieldsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Report = TestDevice::Report;

// A registered device, the object that a plug-in makes for it, and what its callback was told.
class HIDDeviceTest : public testing::Test {
protected:
    struct Received {
        IOReturn result;
        void* sender;
        IOHIDReportType type;
        std::uint32_t reportID;
        Report report;
        std::uint64_t timeStamp;
    };

    const Ref<TestDevice> backend = makeRef<TestDevice>();
    const io_service_t service = registerDevice(backend);
    const Ref<HIDDevice> device = IOHIDDeviceCreate(nullptr, service);
    const Ref<String> mode = makeRef<String>("Reports");
    std::array<std::uint8_t, 4> buffer{};
    std::vector<Received> received;

    void TearDown() override { unregisterDevice(service); }

    static void keep(void* context, IOReturn result, void* sender, IOHIDReportType type, std::uint32_t reportID,
                     std::uint8_t* report, CFIndex length, std::uint64_t timeStamp) {
        auto* const test = static_cast<HIDDeviceTest*>(context);
        EXPECT_EQ(report, test->buffer.data());
        test->received.push_back({result, sender, type, reportID, {report, report + length}, timeStamp});
    }
    void registerCallback(IOHIDReportWithTimeStampCallback callback = keep) {
        IOHIDDeviceRegisterInputReportWithTimeStampCallback(device.get(), buffer.data(), 4, callback, this);
    }
    void schedule() const { IOHIDDeviceScheduleWithRunLoop(device.get(), CFRunLoopGetCurrent(), mode.get()); }
    void unschedule() const { IOHIDDeviceUnscheduleFromRunLoop(device.get(), CFRunLoopGetCurrent(), mode.get()); }
    [[nodiscard]] CFRunLoopRunResult run(double seconds = 0) const {
        return CFRunLoopRunInMode(mode.get(), seconds, true);
    }
};

TEST_F(HIDDeviceTest, EveryCallToleratesANullDevice) {
    std::uint8_t report[2]{7, 7};
    CFIndex length = 2;
    EXPECT_NE(IOHIDDeviceOpen(nullptr, 0), kIOReturnSuccess);
    EXPECT_NE(IOHIDDeviceClose(nullptr, 0), kIOReturnSuccess);
    IOHIDDeviceRegisterInputReportWithTimeStampCallback(nullptr, buffer.data(), 4, keep, this);
    IOHIDDeviceScheduleWithRunLoop(nullptr, CFRunLoopGetCurrent(), mode.get());
    IOHIDDeviceUnscheduleFromRunLoop(nullptr, CFRunLoopGetCurrent(), mode.get());
    EXPECT_NE(IOHIDDeviceGetReport(nullptr, kIOHIDReportTypeFeature, 1, report, &length), kIOReturnSuccess);
    EXPECT_FALSE(IOHIDDeviceGetProperty(nullptr, mode.get()));
    EXPECT_FALSE(IOHIDDeviceSetProperty(nullptr, mode.get(), Number::withBool(true).get()));
    EXPECT_EQ(run(), kCFRunLoopRunFinished);
}

TEST_F(HIDDeviceTest, AServiceHandleIsNeverGivenAgainAndGivesNothingOnceItIsTakenBack) {
    EXPECT_FALSE(IOHIDDeviceCreate(nullptr, 0));
    const io_service_t second = registerDevice(makeRef<TestDevice>());
    EXPECT_NE(second, 0U);
    EXPECT_NE(second, service);
    unregisterDevice(second);
    EXPECT_FALSE(IOHIDDeviceCreate(nullptr, second));
    unregisterDevice(second);
    const io_service_t third = registerDevice(makeRef<TestDevice>());
    EXPECT_NE(third, second);
    unregisterDevice(third);

    unregisterDevice(service);
    EXPECT_EQ(IOHIDDeviceOpen(device.get(), 1), kIOReturnSuccess) << "a device that was made before stays";
}

TEST_F(HIDDeviceTest, ADeviceLivesUntilItsObjectGoes) {
    auto gone = makeRef<TestDevice>();
    const auto* const borrowed = gone.get();
    const io_service_t handle = registerDevice(gone);
    auto object = IOHIDDeviceCreate(nullptr, handle);
    unregisterDevice(handle);
    EXPECT_EQ(CFGetRetainCount(borrowed), 2);
    object = nullptr;
    EXPECT_EQ(CFGetRetainCount(borrowed), 1);
}

TEST_F(HIDDeviceTest, OpenAndCloseHandOnOptionsAndResult) {
    EXPECT_EQ(IOHIDDeviceOpen(device.get(), 0x11), kIOReturnSuccess);
    EXPECT_EQ(backend->openedWith.load(), 0x11U);
    EXPECT_EQ(backend->closedWith.load(), TestDevice::kNever);
    EXPECT_EQ(IOHIDDeviceClose(device.get(), 0x22), kIOReturnSuccess);
    EXPECT_EQ(backend->closedWith.load(), 0x22U);
    backend->openResult = kIOReturnNoResources;
    EXPECT_EQ(IOHIDDeviceOpen(device.get(), 0x33), kIOReturnNoResources);
    EXPECT_EQ(backend->openedWith.load(), 0x33U);
}

TEST_F(HIDDeviceTest, EachReportIsASourceAndComesWithItsIDAndTimeStamp) {
    registerCallback();
    schedule();
    backend->deliver({0x20, 1});
    backend->deliver({0x21, 2, 3, 4});
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    ASSERT_EQ(received.size(), 1U);
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    EXPECT_EQ(run(), kCFRunLoopRunTimedOut);
    EXPECT_THAT(received, ElementsAre(FieldsAre(kIOReturnSuccess, device.get(), kIOHIDReportTypeInput, 0x20,
                                                ElementsAre(0x20, 1), TestDevice::kStamp),
                                      FieldsAre(kIOReturnSuccess, device.get(), kIOHIDReportTypeInput, 0x21,
                                                ElementsAre(0x21, 2, 3, 4), TestDevice::kStamp)));
    EXPECT_EQ(backend->deliveredReports(), 2U);
    unschedule();
}

TEST_F(HIDDeviceTest, AReportIsCutToTheBufferAndAnEmptyOneHasTheID0) {
    registerCallback();
    schedule();
    backend->deliver({0x20, 1, 2, 3, 4, 5});
    backend->deliver({});
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    ASSERT_EQ(received.size(), 2U);
    EXPECT_THAT(received[0].report, ElementsAre(0x20, 1, 2, 3));
    EXPECT_THAT(received[1].report, IsEmpty());
    EXPECT_EQ(received[1].reportID, 0U) << "not what the last report has left in the buffer";
    unschedule();
}

TEST_F(HIDDeviceTest, ANullCallbackDropsReportsAndAnUnscheduledDeviceKeepsThem) {
    schedule();
    registerCallback(nullptr);
    backend->deliver({1});
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    EXPECT_EQ(backend->deliveredReports(), 0U);
    unschedule();
    registerCallback();
    backend->deliver({2});
    EXPECT_EQ(run(), kCFRunLoopRunFinished);
    schedule();
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    ASSERT_EQ(received.size(), 1U);
    EXPECT_THAT(received[0].report, ElementsAre(2));
    unschedule();
}

TEST_F(HIDDeviceTest, ADeviceThatCannotBeReadIsLoggedAndAddsNoSource) {
    backend->failsToStart = true;
    const LogCapture log(OS_LOG_TYPE_ERROR);
    schedule();
    EXPECT_EQ(run(), kCFRunLoopRunFinished);
    EXPECT_THAT(log.lines(), ElementsAre(FieldsAre("HIDDevice", OS_LOG_TYPE_ERROR, HasSubstr("cannot be read"))));
    backend->failsToStart = false;
    schedule();
    EXPECT_EQ(run(), kCFRunLoopRunTimedOut);
    unschedule();
}

TEST_F(HIDDeviceTest, ADeviceThatGoesHandsOnItsLastReportsAndLeavesItsMode) {
    int removals = 0;
    backend->removalHandler = [&removals] { ++removals; };
    registerCallback();
    schedule();
    backend->deliver({1});
    backend->unplug();
    backend->unplug();
    backend->deliver({2});
    EXPECT_EQ(removals, 1);
    CFRunLoopRunResult result = run();
    while (result == kCFRunLoopRunHandledSource)
        result = run();
    EXPECT_EQ(result, kCFRunLoopRunFinished);
    ASSERT_EQ(received.size(), 1U);
    EXPECT_THAT(received[0].report, ElementsAre(1));
    unschedule();
    schedule();
    EXPECT_EQ(run(), kCFRunLoopRunFinished) << "one that has gone adds no source";
}

TEST_F(HIDDeviceTest, DeliverAndWaitReturnsWhenTheCallbackOnTheLoopsThreadHas) {
    const auto isScheduled = dispatch_semaphore_create(0);
    std::jthread reader([&] {
        registerCallback();
        schedule();
        isScheduled->signal();
        while (run(std::numeric_limits<double>::infinity()) == kCFRunLoopRunHandledSource) {
        }
        unschedule();
    });
    isScheduled->wait();
    for (std::uint8_t i = 1; i <= 50; ++i) {
        backend->deliverAndWait({i});
        ASSERT_EQ(received.size(), i);
        EXPECT_EQ(received.back().reportID, i);
    }
    backend->unplug();
    backend->deliverAndWait({1}); // dropped
    reader.join();
    EXPECT_EQ(received.size(), 50U);
}

TEST_F(HIDDeviceTest, AFeatureReportComesWithItsStatusAndTheLengthThatTheDeviceGives) {
    backend->setFeatureReport(0x51, {.bytes = {0x51, 1, 2}});
    backend->setFeatureReport(0x52, {.bytes = {0x52, 1, 2, 3, 4, 5}});
    backend->setFeatureReport(0x53, {.bytes = {0x53}, .claimedLength = 600});
    backend->setFeatureReport(0x54, {.bytes = {0x54}, .status = kIOReturnError});
    struct Row {
        std::uint32_t reportID;
        IOReturn status;
        CFIndex length;
        std::array<std::uint8_t, 5> buffer; // of which 4 are the device's to fill
    };
    const Row rows[]{
        {0x51, kIOReturnSuccess, 3, {0x51, 1, 2, 9, 9}},   {0x52, kIOReturnSuccess, 6, {0x52, 1, 2, 3, 9}},
        {0x53, kIOReturnSuccess, 600, {0x53, 9, 9, 9, 9}}, {0x54, kIOReturnError, 1, {0x54, 9, 9, 9, 9}},
        {0x55, kIOReturnUnsupported, 0, {9, 9, 9, 9, 9}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << "report 0x" << std::hex << row.reportID);
        std::array<std::uint8_t, 5> report{9, 9, 9, 9, 9};
        CFIndex length = 4;
        EXPECT_EQ(IOHIDDeviceGetReport(device.get(), kIOHIDReportTypeFeature, row.reportID, report.data(), &length),
                  row.status);
        EXPECT_EQ(length, row.length);
        EXPECT_EQ(report, row.buffer);
    }
    CFIndex length = 4;
    EXPECT_EQ(IOHIDDeviceGetReport(device.get(), kIOHIDReportTypeInput, 0x51, buffer.data(), &length),
              kIOReturnUnsupported);
}

TEST_F(HIDDeviceTest, PropertiesAreTheDevices) {
    const auto fixed = makeRef<String>("Product");
    const auto settable = makeRef<String>("Sensitivity");
    const auto value = Number::withUnsignedInt(7);
    backend->giveProperty("Product", value);
    backend->giveProperty("Sensitivity", nullptr, true);
    EXPECT_EQ(IOHIDDeviceGetProperty(device.get(), fixed.get()).get(), value.get());
    EXPECT_FALSE(IOHIDDeviceGetProperty(device.get(), settable.get()));
    EXPECT_FALSE(IOHIDDeviceSetProperty(device.get(), fixed.get(), nullptr));
    EXPECT_TRUE(IOHIDDeviceSetProperty(device.get(), settable.get(), value.get()));
    EXPECT_EQ(IOHIDDeviceGetProperty(device.get(), settable.get()).get(), value.get());
    EXPECT_EQ(CFGetRetainCount(value.get()), 3) << "the caller's and one in each property";
}

} // namespace
} // namespace VeltoTouch::Tests
