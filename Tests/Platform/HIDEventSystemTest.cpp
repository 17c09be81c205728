#include "Tests/Support/TestAccelerometer.h"

#include <limits>
#include <thread>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;
using testing::FieldsAre;
using testing::IsEmpty;

class HIDEventSystemTest : public testing::Test {
protected:
    struct Received {
        IOHIDServiceClientRef sender;
        double x;
    };

    const Ref<TestAccelerometer> first = makeRef<TestAccelerometer>();
    const Ref<TestAccelerometer> gyroscope = makeRef<TestAccelerometer>(9U);
    const Ref<TestAccelerometer> second = makeRef<TestAccelerometer>();
    const Ref<String> mode = makeRef<String>("Reports");
    Ref<HIDEventSystemClient> client;
    std::vector<Received> received;

    void SetUp() override {
        for (const Ref<TestAccelerometer>& service : {first, gyroscope, second})
            registerEventService(service);
        client = IOHIDEventSystemClientCreateWithType(nullptr, 1, nullptr);
    }
    void TearDown() override {
        for (const Ref<TestAccelerometer>& service : {first, gyroscope, second})
            unregisterEventService(service);
    }

    void match(std::vector<Dictionary::Entry> entries) const {
        IOHIDEventSystemClientSetMatching(client.get(), makeRef<Dictionary>(std::move(entries)).get());
    }
    void matchAccelerometers() const {
        match({{"PrimaryUsagePage", Number::withUnsignedInt(0xFF00)}, {"PrimaryUsage", Number::withUnsignedInt(3)}});
    }
    [[nodiscard]] std::vector<HIDEventService*> services() const {
        std::vector<HIDEventService*> found;
        for (const Ref<HIDEventService>& service : IOHIDEventSystemClientCopyServices(client.get()))
            found.push_back(service.get());
        return found;
    }
    void keepEvents() {
        IOHIDEventSystemClientRegisterEventBlock(
            client.get(),
            [this](void* target, void* refcon, IOHIDServiceClientRef sender, HIDEvent* event) {
                EXPECT_EQ(target, this);
                EXPECT_EQ(refcon, &received);
                received.push_back({sender, IOHIDEventGetFloatValue(event, kIOHIDEventFieldAccelerometerX)});
            },
            this, &received);
    }
    void schedule() const {
        IOHIDEventSystemClientScheduleWithRunLoop(client.get(), CFRunLoopGetCurrent(), mode.get());
    }
    void unschedule() const {
        IOHIDEventSystemClientUnscheduleWithRunLoop(client.get(), CFRunLoopGetCurrent(), mode.get());
    }
    [[nodiscard]] CFRunLoopRunResult run(double seconds = 0) const {
        return CFRunLoopRunInMode(mode.get(), seconds, true);
    }
};

TEST_F(HIDEventSystemTest, ServicesMatchByAllEntriesAndComeInTheOrderOfTheirRegistration) {
    EXPECT_THAT(services(), ElementsAre(first.get(), gyroscope.get(), second.get()));
    matchAccelerometers();
    EXPECT_THAT(services(), ElementsAre(first.get(), second.get()));
    match({{"PrimaryUsage", Number::withUnsignedInt(9)}});
    EXPECT_THAT(services(), ElementsAre(gyroscope.get()));
    match({{"PrimaryUsage", Number::withUnsignedInt(9)}, {"Absent", Number::withBool(true)}});
    EXPECT_THAT(services(), IsEmpty());

    matchAccelerometers();
    unregisterEventService(first);
    EXPECT_THAT(services(), ElementsAre(second.get()));
    registerEventService(first);
    EXPECT_THAT(services(), ElementsAre(second.get(), first.get()));
}

TEST_F(HIDEventSystemTest, NoClientCanBeMadeWhileTheEventSystemRefuses) {
    allowEventSystemClients(false);
    const auto refused = IOHIDEventSystemClientCreateWithType(nullptr, 1, nullptr);
    allowEventSystemClients(true);
    EXPECT_FALSE(refused);
    EXPECT_TRUE(IOHIDEventSystemClientCreateWithType(nullptr, 1, nullptr));
}

TEST_F(HIDEventSystemTest, EventsOfAllMatchingServicesReachTheBlockUntilUnscheduled) {
    matchAccelerometers();
    keepEvents();
    schedule();
    first->deliver(1, 0, 0);
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    gyroscope->deliver(2, 0, 0);
    EXPECT_EQ(run(), kCFRunLoopRunTimedOut);
    second->deliver(3, 0, 0);
    second->deliver(4, 0, 0);
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    EXPECT_THAT(received,
                ElementsAre(FieldsAre(first.get(), 1), FieldsAre(second.get(), 3), FieldsAre(second.get(), 4)));

    second->deliver(5, 0, 0);
    unschedule();
    first->deliver(6, 0, 0);
    EXPECT_EQ(run(), kCFRunLoopRunFinished);
    EXPECT_EQ(received.size(), 3U);
}

TEST_F(HIDEventSystemTest, WithoutABlockEventsAreDropped) {
    schedule();
    first->deliver(1, 0, 0);
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    keepEvents();
    IOHIDEventSystemClientUnregisterEventBlock(client.get(), {}, nullptr, nullptr);
    first->deliver(2, 0, 0);
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    EXPECT_THAT(received, IsEmpty());
}

TEST_F(HIDEventSystemTest, AClientThatGoesTakesItsSourcesAlong) {
    keepEvents();
    schedule();
    EXPECT_EQ(run(), kCFRunLoopRunTimedOut);
    client = nullptr;
    EXPECT_EQ(run(), kCFRunLoopRunFinished);
}

TEST_F(HIDEventSystemTest, AServiceThatCannotStartThrowsAndUnschedulingTakesOutTheOthers) {
    second->failsToStart = true;
    EXPECT_THROW(schedule(), std::system_error);
    EXPECT_EQ(run(), kCFRunLoopRunTimedOut);
    unschedule();
    EXPECT_EQ(run(), kCFRunLoopRunFinished);
}

TEST_F(HIDEventSystemTest, EachOfSeveralClientsGetsTheEventsOnItsOwnThread) {
    matchAccelerometers();
    keepEvents();
    schedule();
    const auto isScheduled = dispatch_semaphore_create(0);
    int calls = 0;
    Ref<RunLoop> otherLoop;
    std::jthread listener([&] {
        const auto other = IOHIDEventSystemClientCreateWithType(nullptr, 1, nullptr);
        IOHIDEventSystemClientRegisterEventBlock(
            other.get(), [&](void*, void*, IOHIDServiceClientRef, HIDEvent*) { ++calls; }, nullptr, nullptr);
        otherLoop = Ref<RunLoop>::retained(CFRunLoopGetCurrent());
        IOHIDEventSystemClientScheduleWithRunLoop(other.get(), otherLoop.get(), mode.get());
        isScheduled->signal();
        while (run(std::numeric_limits<double>::infinity()) == kCFRunLoopRunHandledSource) {
        }
    });
    isScheduled->wait();
    gyroscope->deliverAndWait(1, 0, 0); // the other client matches every service
    EXPECT_EQ(calls, 1);
    unschedule();
    first->deliverAndWait(2, 0, 0);
    EXPECT_EQ(calls, 2);
    CFRunLoopStop(otherLoop.get());
    listener.join();
    EXPECT_THAT(received, IsEmpty());
}

TEST_F(HIDEventSystemTest, AReportIntervalReachesItsServiceAlone) {
    const auto key = makeRef<String>("ReportInterval");
    EXPECT_EQ(second->reportInterval(), std::nullopt);
    EXPECT_TRUE(IOHIDServiceClientSetProperty(second.get(), key.get(), Number::withDouble(10'000).get()));
    EXPECT_EQ(second->reportInterval(), 10'000);
    EXPECT_EQ(first->reportInterval(), std::nullopt);
    EXPECT_FALSE(IOHIDServiceClientSetProperty(second.get(), mode.get(), Number::withDouble(1).get()));
}

} // namespace
} // namespace VeltoTouch::Tests
