#include "Tests/Support/TestAccelerometer.h"

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;
using testing::FieldsAre;
using testing::IsEmpty;

// What fails, and the setting of an interval, is told by the tests of AccelSystem.
class HIDEventSystemTest : public testing::Test {
protected:
    struct Received {
        IOHIDServiceClientRef sender;
        double x;
    };

    const Ref<TestAccelerometer> first = makeRef<TestAccelerometer>();
    const Ref<TestAccelerometer> gyroscope = makeRef<TestAccelerometer>(9U);
    const Ref<TestAccelerometer> second = makeRef<TestAccelerometer>();
    const Dictionary::Entry accelerometers{"PrimaryUsage", Number::withUnsignedInt(3)};
    const Dictionary::Entry gyroscopes{"PrimaryUsage", Number::withUnsignedInt(9)};
    const Ref<String> mode = makeRef<String>("Reports");
    Ref<HIDEventSystemClient> client = IOHIDEventSystemClientCreateWithType(nullptr, 1, nullptr);
    std::vector<Received> received;

    void SetUp() override {
        for (const Ref<TestAccelerometer>& service : {first, gyroscope, second})
            registerEventService(service);
    }
    void TearDown() override {
        for (const Ref<TestAccelerometer>& service : {first, gyroscope, second})
            unregisterEventService(service);
    }

    void match(std::vector<Dictionary::Entry> entries) const {
        IOHIDEventSystemClientSetMatching(client.get(), makeRef<Dictionary>(std::move(entries)).get());
    }
    [[nodiscard]] std::vector<HIDServiceClient*> services() const {
        std::vector<HIDServiceClient*> found;
        for (const Ref<HIDServiceClient>& service : IOHIDEventSystemClientCopyServices(client.get()))
            found.push_back(service.get());
        return found;
    }
    void keepEvents() {
        const auto keep = [this](void* target, void* refcon, IOHIDServiceClientRef sender, HIDEvent* event) {
            EXPECT_EQ(target, this);
            EXPECT_EQ(refcon, &received);
            received.push_back({sender, IOHIDEventGetFloatValue(event, kIOHIDEventFieldAccelerometerX)});
        };
        IOHIDEventSystemClientRegisterEventBlock(client.get(), keep, this, &received);
    }
    void schedule() const {
        IOHIDEventSystemClientScheduleWithRunLoop(client.get(), CFRunLoopGetCurrent(), mode.get());
    }
    [[nodiscard]] CFRunLoopRunResult run() const { return CFRunLoopRunInMode(mode.get(), 0, true); }
};

TEST_F(HIDEventSystemTest, ServicesMatchByAllEntriesAndComeInTheOrderOfTheirRegistration) {
    EXPECT_THAT(services(), ElementsAre(first.get(), gyroscope.get(), second.get()));
    match({gyroscopes});
    EXPECT_THAT(services(), ElementsAre(gyroscope.get()));
    match({gyroscopes, {"Absent", Number::withBool(true)}});
    EXPECT_THAT(services(), IsEmpty());

    match({accelerometers});
    EXPECT_THAT(services(), ElementsAre(first.get(), second.get()));
    unregisterEventService(first);
    EXPECT_THAT(services(), ElementsAre(second.get()));
    registerEventService(first);
    EXPECT_THAT(services(), ElementsAre(second.get(), first.get()));
}

TEST_F(HIDEventSystemTest, EventsOfMatchingServicesReachTheBlockUntilUnscheduledAndAreDroppedWithoutOne) {
    match({accelerometers});
    keepEvents();
    schedule();
    first->deliver(1, 0, 0);
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    gyroscope->deliver(2, 0, 0);
    EXPECT_EQ(run(), kCFRunLoopRunTimedOut);
    second->deliver(3, 0, 0);
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    EXPECT_THAT(received, ElementsAre(FieldsAre(first.get(), 1), FieldsAre(second.get(), 3)));

    second->deliver(4, 0, 0); // under way
    IOHIDEventSystemClientUnscheduleWithRunLoop(client.get(), CFRunLoopGetCurrent(), mode.get());
    EXPECT_EQ(run(), kCFRunLoopRunFinished);
    schedule();
    IOHIDEventSystemClientUnregisterEventBlock(client.get(), {}, nullptr, nullptr);
    first->deliver(5, 0, 0);
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    EXPECT_EQ(received.size(), 2U);
    EXPECT_EQ(run(), kCFRunLoopRunTimedOut);
    client = nullptr;
    EXPECT_EQ(run(), kCFRunLoopRunFinished) << "a client that goes takes its sources along";
}

} // namespace
} // namespace VeltoTouch::Tests
