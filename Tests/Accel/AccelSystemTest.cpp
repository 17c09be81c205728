#include "Plugin/Accel/AccelSystem.h"
#include "Platform/Testing/EventSystem.h"
#include "Tests/Support/TestAccelerometer.h"

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::ThrowsMessage;

// Two accelerometers and something else that gives events.
class AccelSystemTest : public testing::Test {
protected:
    AccelSystemTest() {
        for (const Ref<TestAccelerometer>& service : {keyboard, first, second})
            registerEventService(service);
    }
    ~AccelSystemTest() override {
        for (const Ref<TestAccelerometer>& service : {keyboard, first, second})
            unregisterEventService(service);
    }

    // A system on this thread's loop.
    AccelSystem listen(std::uint32_t frequency = 100) const {
        return {CFRunLoopGetCurrent(), mode.get(), frequency, callback};
    }
    // Handles what is waiting, and says whether the mode has sources at all.
    bool runLoop() const {
        CFRunLoopRunResult result{};
        do
            result = CFRunLoopRunInMode(mode.get(), 0, true);
        while (result == kCFRunLoopRunHandledSource);
        return result != kCFRunLoopRunFinished;
    }

    const Ref<String> mode = makeRef<String>("a mode");
    const Ref<TestAccelerometer> keyboard = makeRef<TestAccelerometer>(6U);
    const Ref<TestAccelerometer> first = makeRef<TestAccelerometer>();
    const Ref<TestAccelerometer> second = makeRef<TestAccelerometer>();
    std::vector<double> heights;
    const AccelSystem::Callback callback = [this](HIDEvent* event) {
        heights.push_back(IOHIDEventGetFloatValue(event, kIOHIDEventFieldAccelerometerZ));
    };
};

TEST_F(AccelSystemTest, EventsOfAccelerometersAloneReachTheCallback) {
    const AccelSystem system = listen();
    first->deliver(0, 0, 1);
    second->deliver(0, 0, 2);
    keyboard->deliver(0, 0, 3);
    first->deliver(IOHIDEventCreateVendorDefinedEvent(nullptr, 0, 0xFF00, 3, 0, {}, 0));
    EXPECT_TRUE(runLoop());
    EXPECT_THAT(heights, testing::UnorderedElementsAre(1, 2));
}

TEST_F(AccelSystemTest, FirstAccelerometerAloneGetsTheIntervalInMicroseconds) {
    { const AccelSystem system = listen(100); }
    EXPECT_EQ(first->reportInterval(), 10'000.0);
    EXPECT_EQ(second->reportInterval(), std::nullopt);
    unregisterEventService(first);
    registerEventService(first); // is the last now
    { const AccelSystem system = listen(1); }
    EXPECT_EQ(second->reportInterval(), 1'000'000.0);
}

TEST_F(AccelSystemTest, CleanupEndsTheDeliveryAndKeepsTheObjects) {
    const CFIndex references = CFGetRetainCount(first.get());
    {
        const auto held = std::make_shared<int>();
        AccelSystem system(CFRunLoopGetCurrent(), mode.get(), 100, [held, this](HIDEvent* event) { callback(event); });
        first->deliver(0, 0, 1); // under way
        system.cleanup();
        EXPECT_EQ(held.use_count(), 1) << "the callback is still held";
        system.cleanup();
        first->deliver(0, 0, 2);
        EXPECT_FALSE(runLoop());
        EXPECT_EQ(CFGetRetainCount(first.get()), references + 1);
        EXPECT_EQ(system.retainedObjects.size(), 4U);
        EXPECT_EQ(system.runLoop, nullptr);
    }
    EXPECT_EQ(CFGetRetainCount(first.get()), references);
    EXPECT_THAT(heights, IsEmpty());
}

TEST_F(AccelSystemTest, MissingArgumentIsRefusedBeforeAnythingIsMade) {
    allowEventSystemClients(false); // a client that is asked for would be told of
    const auto missing = ThrowsMessage<std::invalid_argument>("nil argument");
    EXPECT_THAT([this] { AccelSystem(nullptr, mode.get(), 100, callback); }, missing);
    EXPECT_THAT([this] { AccelSystem(CFRunLoopGetCurrent(), nullptr, 100, callback); }, missing);
    EXPECT_THAT([this] { AccelSystem(CFRunLoopGetCurrent(), mode.get(), 100, nullptr); }, missing);
    allowEventSystemClients(true);
}

// Why else it fails, the service's tests tell.
TEST_F(AccelSystemTest, ConstructionThatFailsLeavesNothingBehind) {
    const CFIndex references = CFGetRetainCount(first.get());
    second->failsToStart = true; // when the first one is listened to already
    EXPECT_THAT([this] { listen(); }, testing::Throws<std::system_error>());
    EXPECT_EQ(CFGetRetainCount(first.get()), references);
    EXPECT_FALSE(runLoop());
}

TEST_F(AccelSystemTest, ObjectsAreReleasedFromTheLastToTheFirst) {
    struct Noted final : Object { // notes when it goes
        Noted(std::vector<int>& gone, int number) : _gone(gone), _number(number) {}
        ~Noted() override { _gone.push_back(_number); }
        std::vector<int>& _gone;
        int _number;
    };
    std::vector<int> gone;
    {
        AccelSystem system = listen();
        for (int number = 1; number <= 3; ++number)
            system.retainedObjects.push_back(makeRef<Noted>(gone, number));
    }
    EXPECT_THAT(gone, ElementsAre(3, 2, 1));
}

// What the system's client does beyond what the system asks of it.
TEST_F(AccelSystemTest, ClientMatchesByAllEntriesAndNamesTheSender) {
    Ref<HIDEventSystemClient> client = IOHIDEventSystemClientCreateWithType(nullptr, 1, nullptr);
    const auto servicesWith = [&](std::vector<Dictionary::Entry> entries) {
        IOHIDEventSystemClientSetMatching(client.get(), makeRef<Dictionary>(std::move(entries)).get());
        std::vector<HIDServiceClient*> services;
        for (const Ref<HIDServiceClient>& service : IOHIDEventSystemClientCopyServices(client.get()))
            services.push_back(service.get());
        return services;
    };
    const Dictionary::Entry accelerometers{"PrimaryUsage", Number::withUnsignedInt(3)};
    EXPECT_THAT(servicesWith({}), ElementsAre(keyboard.get(), first.get(), second.get()));
    EXPECT_THAT(servicesWith({accelerometers, {"Absent", Number::withBool(true)}}), IsEmpty());
    EXPECT_THAT(servicesWith({accelerometers}), ElementsAre(first.get(), second.get()));

    std::vector<IOHIDServiceClientRef> senders;
    const auto keep = [&](void* target, void* refcon, IOHIDServiceClientRef sender, HIDEvent* /*event*/) {
        EXPECT_EQ(target, this);
        EXPECT_EQ(refcon, &senders);
        senders.push_back(sender);
    };
    IOHIDEventSystemClientRegisterEventBlock(client.get(), keep, this, &senders);
    IOHIDEventSystemClientScheduleWithRunLoop(client.get(), CFRunLoopGetCurrent(), mode.get());
    second->deliver(0, 0, 1);
    EXPECT_TRUE(runLoop());
    IOHIDEventSystemClientUnregisterEventBlock(client.get(), {}, nullptr, nullptr);
    second->deliver(0, 0, 2); // dropped
    EXPECT_TRUE(runLoop());
    EXPECT_THAT(senders, ElementsAre(second.get()));
    client = nullptr;
    EXPECT_FALSE(runLoop()) << "a client that goes takes its sources along";
}

} // namespace
} // namespace VeltoTouch::Tests
