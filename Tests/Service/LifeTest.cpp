#include "Platform/Backend/HIDEventService.h"
#include "Platform/Testing/EventSystem.h"
#include "Platform/Testing/LogCapture.h"
#include "Tests/Support/Eventually.h"
#include "Tests/Support/TestAccelerometer.h"
#include "Tests/Support/TestHost.h"

#include <thread>

#include <sys/resource.h>

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

TEST_F(LifeTest, OptionsReachTheDeviceAndStopLetsItGo) {
    TestHost host(device);
    EXPECT_EQ(host.start(), kIOReturnSuccess);
    device->openResult = kIOReturnNoDevice;
    EXPECT_FALSE(host.open());
    device->openResult = kIOReturnSuccess;
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

TEST_F(LifeTest, EventsComeFromScheduleToUnscheduleWhichKeepsTheState) {
    TestHost host(device);
    host.schedule();
    device->deliverAll(tap);
    EXPECT_TRUE(device->isRead);
    host.unschedule();
    EXPECT_FALSE(device->isRead);
    device->deliver(tap.front()); // kept by the device until it is scheduled again
    EXPECT_THAT(host.events(), ElementsAre(MayBegin(PlayPause), Tap(PlayPause)));
    while (CFGetRetainCount(host.queue.get()) != 1) // the thread's own reference goes a little later
        std::this_thread::yield();
    host.schedule();
    device->deliverAll(tap);
    EXPECT_EQ(host.events().size(), 4U);
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

TEST_F(LifeTest, WithoutACallbackBatchesStillLand) {
    TestHost host(device);
    host.schedule().unschedule();
    (*host.service)->setEventCallback(host.service, nullptr, nullptr, nullptr);
    (*host.service)->scheduleWithDispatchQueue(host.service, host.queue.get());
    const LogCapture log(OS_LOG_TYPE_DEBUG);
    device->deliverAll(tap);
    EXPECT_THAT(host.events(), IsEmpty());
    EXPECT_THAT(messagesOf(log), Contains("Dispatch 1 event(s) land").Times(2));
}

TEST_F(LifeTest, CallbackOrQueueSetWhileTheThreadRunsChangesNothing) {
    TestHost host(device);
    host.schedule();
    device->deliverAndWait({});
    const auto otherQueue = dispatch_queue_create("other");
    const LogCapture log(OS_LOG_TYPE_ERROR);
    const auto fail = [](auto...) { FAIL() << "a later callback was called"; };
    (*host.service)->setEventCallback(host.service, fail, nullptr, nullptr);
    (*host.service)->scheduleWithDispatchQueue(host.service, otherQueue.get());
    EXPECT_THAT(log.lines(), ElementsAre(FieldsAre("HIDService", OS_LOG_TYPE_ERROR, HasSubstr("schedule"))));
    EXPECT_EQ(CFGetRetainCount(otherQueue.get()), 1);
    device->deliverAll(tap);
    EXPECT_EQ(host.events().size(), 2U);

    TestHost second(device);
    (*second.service)->scheduleWithDispatchQueue(second.service, nullptr);
    EXPECT_EQ(log.lines().size(), 2U);
}

TEST_F(LifeTest, TheLogTellsTheLifeInItsOrder) {
    const LogCapture log(OS_LOG_TYPE_DEBUG);
    {
        TestHost host(device);
        std::int32_t order = 0;
        (*host.plugIn)->Probe(host.plugIn, nullptr, 0, &order);
        host.schedule();
        device->deliverAndWait({}); // by now the thread runs
        (*host.service)->copyEvent(host.service, kIOHIDEventTypeDigitizer, nullptr, 0);
        (*host.service)->setOutputEvent(host.service, nullptr);
    }
    std::vector<std::string> messages;
    EXPECT_TRUE(eventually([&] { // the thread's reference may be the last
        messages = messagesOf(log);
        return std::ranges::count(messages, "dealloc") == 1;
    }));
    std::erase_if(messages, [](const std::string& message) { // the report's, and the thread's last may come too late
        const auto has = [&message](const char* words) { return message.find(words) != message.npos; };
        return has("report (type") || has(" probe") || has("Invalid") || has("accel system") || has("thread end");
    });
    EXPECT_THAT(
        messages,
        ElementsAre("probeWithService:properties:outScore:", "startWithService:properties:", "openWithOptions:0",
                    "setEventCallback:target:refcon:", "scheduleWithDispatchQueue:", "input report thread start",
                    "copyEventWithType:matching:options:", "setOutputEvent:", "unscheduleWithDispatchQueue:",
                    "signalling input report thread to exit", "waiting for input report thread to exit",
                    "input report thread exited", "closeWithOptions:0", "stop", "dealloc"));
}

TEST_F(LifeTest, DeviceThatGoesInATouchEndsTheThread) {
    TestHost host(device);
    host.schedule();
    device->deliverAll(std::vector<Report>(tap.begin(), tap.begin() + 5));
    device->unplug();
    host.unschedule();
    EXPECT_THAT(host.events(), ElementsAre(MayBegin(PlayPause)));
    EXPECT_NE(host.property("Pipeline.DebugInfo"), nullptr);
    host.schedule().unschedule(); // a device that has gone
}

TEST_F(LifeTest, DeviceThatCannotBeReadIsAnErrorAndTheHostGoesOn) {
    device->failsToStart = true;
    const LogCapture log(OS_LOG_TYPE_ERROR);
    TestHost host(device);
    host.schedule().unschedule();
    EXPECT_THAT(log.lines(), Contains(FieldsAre("HIDDevice", OS_LOG_TYPE_ERROR, HasSubstr("cannot be read"))));
    device->failsToStart = false;
    host.schedule();
    device->deliverAll(tap);
    EXPECT_EQ(host.events().size(), 2U);
}

TEST_F(LifeTest, WithoutAnAccelerometerEverythingElseWorks) {
    const auto errorAndEvents = [this] {
        const LogCapture log(OS_LOG_TYPE_ERROR);
        TestHost host(device);
        host.schedule();
        device->deliverAll(tap);
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
TEST_F(LifeTest, OrdinaryThreadDoesWhereTheRaisedPriorityIsRefused) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto runUnprivileged = [this] {
        const rlimit none{.rlim_cur = 0, .rlim_max = 0};
        constexpr uid_t kNobody = 65534;
        if (setrlimit(RLIMIT_RTPRIO, &none) != 0 || (getuid() == 0 && setuid(kNobody) != 0))
            _exit(2);
        const LogCapture log(OS_LOG_TYPE_ERROR);
        TestHost host(device);
        host.schedule();
        device->deliverAll(tap);
        const auto messages = messagesOf(log);
        const bool isTold = std::ranges::count(messages, "pthread_setschedparam failed: 1") == 1;
        _exit(isTold && host.events().size() == 2 ? 0 : 1);
    };
    EXPECT_EXIT(runUnprivileged(), testing::ExitedWithCode(0), "");
}

TEST_F(LifeTest, AThousandSchedulesWithReportsInFlightLoseNoReport) {
    TestHost host(device);
    std::thread sender([this] {
        for (std::size_t i = 0; i < 200 * tap.size(); ++i)
            device->deliver(tap[i % tap.size()]);
    });
    for (int i = 0; i < 1000; ++i)
        host.schedule().unschedule();
    sender.join();
    host.schedule();
    device->deliverAndWait({}); // behind all others
    EXPECT_EQ(device->deliveredReports(), 200 * tap.size() + 1);
    EXPECT_EQ(host.events().size(), 400U);
}

TEST_F(LifeTest, SlowCallbackDelaysNoReportAndGetsWhatIsQueuedAtTheEnd) {
    TestHost host(device);
    const auto mayGoOn = dispatch_semaphore_create(0);
    host.whenCalled = [mayGoOn] { mayGoOn->wait(); };
    host.drainsBeforeClosing = false;
    host.schedule();
    device->deliverAll(tap); // returns although the first event is still being handled
    host.end();
    mayGoOn->signal();
    mayGoOn->signal();
    EXPECT_THAT(host.events(), ElementsAre(MayBegin(PlayPause), Tap(PlayPause)));
}

} // namespace
} // namespace VeltoTouch::Tests
