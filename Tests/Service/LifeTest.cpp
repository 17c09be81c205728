#include "Platform/HIDEventSystem.h"
#include "Platform/Log.h"
#include "Tests/Support/TestAccelerometer.h"
#include "Tests/Support/TestHost.h"

#include <thread>

#include <sys/resource.h>
#include <unistd.h>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::FieldsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class LifeTest : public testing::Test {
protected:
    void deliver(const std::vector<Report>& reports) {
        for (const Report& report : reports)
            device->deliverAndWait(report);
    }

    // The messages of the service that the capture has, without the reports' own.
    static std::vector<std::string> messagesOf(const LogCapture& log) {
        std::vector<std::string> messages;
        for (const LogCapture::Line& line : log.lines()) {
            if (line.category == "HIDService")
                messages.push_back(line.message);
        }
        return messages;
    }

    const Ref<TestDevice> device = makeRef<TestDevice>();
    const std::vector<Report> tap = reportsOf({"tap:play-pause"});
};

TEST_F(LifeTest, ADeviceThatCannotBeMadeOrOpenedIsToldAndLeavesNothingBehind) {
    const TestHost host(device);
    EXPECT_EQ((*host.plugIn)->Start(host.plugIn, nullptr, 0), static_cast<IOReturn>(0xE00002BE));
    EXPECT_EQ(CFGetRetainCount(device.get()), 2); // the test's and the registry's
    EXPECT_FALSE((*host.service)->open(host.service, 0)) << "there is no device";

    device->openResult = kIOReturnNoDevice;
    TestHost second(device);
    EXPECT_EQ(second.start(), kIOReturnSuccess);
    EXPECT_FALSE(second.open());
}

TEST_F(LifeTest, OptionsReachTheDeviceAndStopLetsItGo) {
    TestHost host(device);
    host.start();
    const LogCapture log(OS_LOG_TYPE_DEBUG);
    EXPECT_TRUE((*host.service)->open(host.service, 0x1F));
    (*host.service)->close(host.service, 0x2A);
    EXPECT_EQ(device->openedWith.load(), 0x1F);
    EXPECT_EQ(device->closedWith.load(), 0x2A);
    EXPECT_THAT(messagesOf(log), ElementsAre("openWithOptions:1f", "closeWithOptions:2a"));
    const CFIndex referencesWhenStarted = CFGetRetainCount(device.get());
    EXPECT_EQ((*host.plugIn)->Stop(host.plugIn), kIOReturnSuccess);
    EXPECT_EQ(CFGetRetainCount(device.get()), referencesWhenStarted - 1);
}

TEST_F(LifeTest, EventsComeBetweenScheduleAndUnscheduleAndStateOutlivesThem) {
    TestHost host(device);
    host.schedule();
    deliver(tap);
    EXPECT_THAT(host.events(), ElementsAre(MayBegin(PlayPause), Tap(PlayPause)));
    host.unschedule();
    device->deliver(tap.front()); // kept by the device until it is scheduled again
    EXPECT_EQ(host.events().size(), 2U);
    host.schedule();
    deliver(tap);
    EXPECT_EQ(host.events().size(), 4U);
}

TEST_F(LifeTest, UnschedulingLetsDeviceAndQueueGo) {
    TestHost host(device);
    host.schedule();
    device->deliverAndWait({});
    EXPECT_TRUE(device->isRead);
    host.unschedule();
    EXPECT_FALSE(device->isRead);
    while (CFGetRetainCount(host.queue.get()) != 1) // the thread's own reference goes a little later
        std::this_thread::yield();
}

TEST_F(LifeTest, TheThreadHoldsAReferenceToTheService) {
    TestHost host(device);
    const ULONG references = (*host.service)->AddRef(host.service);
    host.schedule();
    EXPECT_EQ((*host.service)->Release(host.service), references); // one less, and the thread's
}

TEST_F(LifeTest, ReportsAreReadByAThreadOfTheRaisedPriority) {
    TestHost host(device);
    int policy = 0;
    sched_param parameters{};
    device->whenRead = [&] { pthread_getschedparam(pthread_self(), &policy, &parameters); };
    host.schedule();
    device->deliverAndWait({});
    if (policy == SCHED_OTHER)
        GTEST_SKIP() << "not allowed to raise it";
    EXPECT_EQ(policy, SCHED_RR);
    EXPECT_EQ(parameters.sched_priority, 63);
}

TEST_F(LifeTest, ACallbackSetWhileTheThreadRunsReachesTheNextOneOnly) {
    TestHost host(device);
    host.schedule();
    (*host.service)
        ->setEventCallback(
            host.service, [](auto...) { FAIL() << "a later callback was called"; }, nullptr, nullptr);
    deliver(tap);
    EXPECT_EQ(host.events().size(), 2U);
}

TEST_F(LifeTest, WithoutACallbackBatchesStillLand) {
    TestHost host(device);
    host.schedule().unschedule();
    (*host.service)->setEventCallback(host.service, nullptr, nullptr, nullptr);
    (*host.service)->scheduleWithDispatchQueue(host.service, host.queue.get());
    const LogCapture log(OS_LOG_TYPE_DEBUG);
    deliver(tap);
    EXPECT_THAT(host.events(), IsEmpty());
    EXPECT_THAT(messagesOf(log), Contains("Dispatch 1 event(s) land").Times(2));
}

TEST_F(LifeTest, SchedulingTwiceOrWithoutAQueueChangesNothingAndIsAnError) {
    TestHost host(device);
    host.schedule();
    device->deliverAndWait({});
    const auto otherQueue = dispatch_queue_create("other");
    const LogCapture log(OS_LOG_TYPE_ERROR);
    (*host.service)->scheduleWithDispatchQueue(host.service, otherQueue.get());
    EXPECT_THAT(log.lines(), ElementsAre(FieldsAre("HIDService", OS_LOG_TYPE_ERROR, HasSubstr("schedule"))));
    TestHost second(device);
    (*second.service)->scheduleWithDispatchQueue(second.service, nullptr);
    EXPECT_EQ(log.lines().size(), 2U);
    EXPECT_EQ(CFGetRetainCount(otherQueue.get()), 1);
    deliver(tap);
    EXPECT_EQ(host.events().size(), 2U);
}

TEST_F(LifeTest, UnschedulingWithoutSchedulingReturnsAtOnce) {
    TestHost host(device);
    host.start();
    host.unschedule().unschedule();
    EXPECT_THAT(host.schedule().events(), IsEmpty());
}

TEST_F(LifeTest, TheLogTellsTheLifeInItsOrder) {
    allowEventSystemClients(true);
    const auto accelerometer = makeRef<TestAccelerometer>();
    registerEventService(accelerometer);
    const LogCapture log(OS_LOG_TYPE_DEBUG);
    {
        TestHost host(device);
        host.schedule();
        deliver(tap); // the thread runs by the time the first is handled
    }
    unregisterEventService(accelerometer);
    auto messages = messagesOf(log);
    std::erase_if(messages, [](const std::string& message) {
        return message.find("image") != message.npos || message.find("report (type") != message.npos ||
               message.find("probe") != message.npos || message.starts_with("Dispatch ");
    });
    std::erase(messages, "input report thread end"); // may come after the host's last line
    EXPECT_THAT(messages,
                ElementsAre("startWithService:properties:", "openWithOptions:0", "setEventCallback:target:refcon:",
                            "scheduleWithDispatchQueue:", "input report thread start", "unscheduleWithDispatchQueue:",
                            "signalling input report thread to exit", "waiting for input report thread to exit",
                            "input report thread exited", "closeWithOptions:0", "stop"));
}

TEST_F(LifeTest, ADeviceThatGoesInTheMiddleOfATouchEndsTheThreadAndUnschedulingReturnsAtOnce) {
    TestHost host(device);
    host.schedule();
    deliver(std::vector<Report>(tap.begin(), tap.begin() + 5));
    device->unplug();
    host.unschedule();
    EXPECT_THAT(host.events(), ElementsAre(MayBegin(PlayPause)));
    EXPECT_NE(host.property("Pipeline.DebugInfo"), nullptr);
    host.schedule().unschedule(); // a device that has gone
}

TEST_F(LifeTest, ADeviceThatCannotBeReadIsAnErrorAndTheHostGoesOn) {
    device->failsToStart = true;
    const LogCapture log(OS_LOG_TYPE_ERROR);
    TestHost host(device);
    host.schedule().unschedule();
    EXPECT_THAT(log.lines(), Contains(FieldsAre("HIDDevice", OS_LOG_TYPE_ERROR, HasSubstr("cannot be read"))));
    device->failsToStart = false;
    host.schedule();
    deliver(tap);
    EXPECT_EQ(host.events().size(), 2U);
}

TEST_F(LifeTest, WithoutAnAccelerometerEverythingElseWorks) {
    const auto errorAndEvents = [this] {
        const LogCapture log(OS_LOG_TYPE_ERROR);
        TestHost host(device);
        host.schedule();
        deliver(tap);
        EXPECT_EQ(host.events().size(), 2U);
        host.unschedule();
        return messagesOf(log);
    };
    const std::string failed = "Failed to create accel system: ";
    EXPECT_THAT(errorAndEvents(), Contains(failed + "IOHIDEventSystemClientCopyServices returned empty array"));
    allowEventSystemClients(false);
    EXPECT_THAT(errorAndEvents(), Contains(failed + "IOHIDEventSystemClientCreateWithType returned nil"));
    allowEventSystemClients(true);
    const auto accelerometer = makeRef<TestAccelerometer>();
    accelerometer->failsToStart = true;
    registerEventService(accelerometer);
    EXPECT_THAT(errorAndEvents(), Contains(HasSubstr(failed + "test accelerometer")));
    unregisterEventService(accelerometer);
}

// In a process of its own, which gives up its rights.
TEST_F(LifeTest, AnOrdinaryThreadDoesWhereTheRaisedPriorityIsRefused) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto runUnprivileged = [this] {
        const rlimit none{.rlim_cur = 0, .rlim_max = 0};
        constexpr uid_t kNobody = 65534;
        if (setrlimit(RLIMIT_RTPRIO, &none) != 0 || (getuid() == 0 && setuid(kNobody) != 0))
            _exit(2);
        const LogCapture log(OS_LOG_TYPE_ERROR);
        TestHost host(device);
        host.schedule();
        deliver(tap);
        const auto messages = messagesOf(log);
        const bool isTold = std::ranges::count(messages, "pthread_setschedparam failed: 1") == 1;
        _exit(isTold && host.events().size() == 2 ? 0 : 1);
    };
    EXPECT_EXIT(runUnprivileged(), testing::ExitedWithCode(0), "");
}

TEST_F(LifeTest, AThousandSchedulesWithReportsInFlightLoseNoReport) {
    TestHost host(device);
    std::thread sender([this] {
        for (int i = 0; i < 200; ++i) {
            for (const Report& report : tap)
                device->deliver(report);
        }
    });
    for (int i = 0; i < 1000; ++i)
        host.schedule().unschedule();
    sender.join();
    host.schedule();
    device->deliverAndWait({}); // behind all others
    EXPECT_EQ(device->deliveredReports(), 200 * tap.size() + 1);
    EXPECT_EQ(host.events().size(), 400U);
}

TEST_F(LifeTest, EventsThatAreQueuedWhenTheServiceGoesStillReachTheHost) {
    const auto isBlocked = dispatch_semaphore_create(0);
    const auto mayGoOn = dispatch_semaphore_create(0);
    const auto queue = dispatch_queue_create("blocked host");
    std::vector<std::string> gestures; // the queue's alone, until it is drained
    const auto take = [](void* target, void*, void*, IOHIDEventRef event, IOOptionBits) {
        static_cast<std::vector<std::string>*>(target)->push_back(gestureOf(*event));
    };
    const io_service_t registered = registerDevice(device);
    auto** plugIn =
        static_cast<IOCFPlugInInterfaceStruct**>(VeltoTouchHIDServiceFactory(nullptr, kIOHIDServicePlugInTypeID));
    void* handle = nullptr;
    (*plugIn)->QueryInterface(plugIn, kIOHIDServiceInterface2ID->bytes(), &handle);
    auto** service = static_cast<IOHIDServiceInterface2**>(handle);
    ASSERT_EQ((*plugIn)->Start(plugIn, nullptr, registered), kIOReturnSuccess);
    ASSERT_TRUE((*service)->open(service, 0));
    (*service)->setEventCallback(service, take, &gestures, nullptr);
    (*service)->scheduleWithDispatchQueue(service, queue.get());

    dispatch_async(queue.get(), [isBlocked, mayGoOn] {
        isBlocked->signal();
        mayGoOn->wait();
    });
    isBlocked->wait();
    deliver(tap); // handled, although the host's queue stands still
    (*service)->unscheduleFromDispatchQueue(service, queue.get());
    (*service)->close(service, 0);
    (*plugIn)->Stop(plugIn);
    (*service)->Release(service);
    (*plugIn)->Release(plugIn);
    unregisterDevice(registered);

    mayGoOn->signal();
    dispatch_sync(queue.get(), [] {});
    EXPECT_THAT(gestures, ElementsAre("MayBegin(PlayPause)", "Tap(PlayPause)"));
}

TEST_F(LifeTest, ASlowCallbackDelaysNoReport) {
    TestHost host(device);
    const auto mayGoOn = dispatch_semaphore_create(0);
    host.whenCalled = [mayGoOn] { mayGoOn->wait(); };
    host.schedule();
    deliver(tap); // returns although the first event is still being handled
    mayGoOn->signal();
    mayGoOn->signal();
    EXPECT_THAT(host.events(), ElementsAre(MayBegin(PlayPause), Tap(PlayPause)));
}

} // namespace
} // namespace VeltoTouch::Tests
