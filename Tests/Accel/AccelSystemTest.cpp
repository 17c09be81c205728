#include "Accel/AccelSystem.h"
#include "Tests/Support/TestAccelerometer.h"

#include <thread>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;
using testing::Throws;
using testing::ThrowsMessage;

// Two accelerometers and something else that gives events.
class AccelSystemTest : public testing::Test {
protected:
    AccelSystemTest() {
        registerEventService(keyboard);
        registerEventService(first);
        registerEventService(second);
    }
    ~AccelSystemTest() override {
        unregisterEventService(keyboard);
        unregisterEventService(first);
        unregisterEventService(second);
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

TEST_F(AccelSystemTest, EventsOfEveryAccelerometerAndOfNoOtherTypeReachTheCallback) {
    const AccelSystem system(CFRunLoopGetCurrent(), mode.get(), 100, callback);
    first->deliver(0, 0, 1);
    second->deliver(0, 0, 2);
    keyboard->deliver(0, 0, 3);
    first->deliver(IOHIDEventCreateVendorDefinedEvent(nullptr, 0, 0xFF00, 3, 0, {}, 0));
    first->deliver(0, 0, 4);
    EXPECT_TRUE(runLoop());
    EXPECT_THAT(heights, testing::UnorderedElementsAre(1, 2, 4));
}

TEST_F(AccelSystemTest, TheFirstAccelerometerAloneGetsTheIntervalInMicroseconds) {
    { const AccelSystem system(CFRunLoopGetCurrent(), mode.get(), 100, callback); }
    EXPECT_EQ(first->reportInterval(), 10'000.0);
    EXPECT_EQ(second->reportInterval(), std::nullopt);
    { const AccelSystem system(CFRunLoopGetCurrent(), mode.get(), 1, callback); }
    EXPECT_EQ(first->reportInterval(), 1'000'000.0);
}

TEST_F(AccelSystemTest, CleanupEndsTheDeliveryForGoodAndKeepsTheObjectsUntilTheEnd) {
    const CFIndex references = CFGetRetainCount(first.get());
    {
        const auto held = std::make_shared<int>();
        AccelSystem system(CFRunLoopGetCurrent(), mode.get(), 100, [held, this](HIDEvent* event) { callback(event); });
        system.cleanup();
        EXPECT_EQ(held.use_count(), 1) << "the callback is still held";
        system.cleanup();
        first->deliver(0, 0, 1);
        EXPECT_FALSE(runLoop());
        EXPECT_EQ(CFGetRetainCount(first.get()), references + 1);
        EXPECT_EQ(system.retainedObjects.size(), 4U);
        EXPECT_EQ(system.runLoop, nullptr);
    }
    EXPECT_EQ(CFGetRetainCount(first.get()), references);
    EXPECT_THAT(heights, ElementsAre());
}

TEST_F(AccelSystemTest, WhatIsMissingIsToldBeforeAnythingIsMade) {
    const auto make = [this](CFRunLoopRef loop, CFStringRef loopMode, const AccelSystem::Callback& handler) {
        return [=, this] {
            allowEventSystemClients(false); // a client that is asked for would be told of
            const auto again = [](void*) { allowEventSystemClients(true); };
            const std::unique_ptr<void, decltype(again)> guard(this, again);
            AccelSystem(loop, loopMode, 100, handler);
        };
    };
    const auto missing = ThrowsMessage<std::invalid_argument>("nil argument");
    EXPECT_THAT(make(nullptr, mode.get(), callback), missing);
    EXPECT_THAT(make(CFRunLoopGetCurrent(), nullptr, callback), missing);
    EXPECT_THAT(make(CFRunLoopGetCurrent(), mode.get(), nullptr), missing);
    EXPECT_THAT(make(CFRunLoopGetCurrent(), mode.get(), callback),
                ThrowsMessage<std::runtime_error>("IOHIDEventSystemClientCreateWithType returned nil"));
}

TEST_F(AccelSystemTest, AConstructionThatFailsLeavesNothingBehind) {
    const CFIndex references = CFGetRetainCount(first.get());
    second->failsToStart = true; // when the first one is listened to already
    EXPECT_THAT([this] { AccelSystem(CFRunLoopGetCurrent(), mode.get(), 100, callback); }, Throws<std::system_error>());
    EXPECT_EQ(CFGetRetainCount(first.get()), references);
    EXPECT_FALSE(runLoop());

    unregisterEventService(first);
    unregisterEventService(second);
    EXPECT_THAT([this] { AccelSystem(CFRunLoopGetCurrent(), mode.get(), 100, callback); },
                ThrowsMessage<std::runtime_error>("IOHIDEventSystemClientCopyServices returned empty array"));
}

// An object that notes in which order it goes.
TEST_F(AccelSystemTest, ObjectsAreReleasedFromTheLastToTheFirst) {
    struct Noted final : Object {
        Noted(std::vector<int>& gone, int number) : _gone(gone), _number(number) {}
        ~Noted() override { _gone.push_back(_number); }
        std::vector<int>& _gone;
        int _number;
    };
    std::vector<int> gone;
    {
        AccelSystem system(CFRunLoopGetCurrent(), mode.get(), 100, callback);
        for (int number = 1; number <= 3; ++number)
            system.retainedObjects.push_back(makeRef<Noted>(gone, number));
    }
    EXPECT_THAT(gone, ElementsAre(3, 2, 1));
}

} // namespace
} // namespace VeltoTouch::Tests
