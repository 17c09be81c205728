#include "Velto/Host/Gesture.h"

#include "Plugin/Algs/Algs.h"

#include <limits>
#include <vector>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

Ref<HIDEvent> touch(std::uint16_t phase, std::uint32_t mask, double y) {
    auto event = IOHIDEventCreateDigitizerEvent(nullptr, 0, kIOHIDDigitizerTransducerTypeFinger, 0, 0, mask, 0, 0.0, y,
                                                0.0, 0.0, 0.0, false, false, 0);
    IOHIDEventSetPhase(event.get(), phase);
    return event;
}

Ref<HIDEvent> vendorDefined(std::uint32_t usagePage, std::uint32_t usage) {
    return IOHIDEventCreateVendorDefinedEvent(nullptr, 0, usagePage, usage, 0, {}, 0);
}

TEST(GestureTest, EachEventOfTheServiceIsOneGestureAndItsMembersFollowFromIt) {
    constexpr PixelRegion kUp = PixelRegion::VolumeUp;
    struct Row {
        Ref<HIDEvent> event;
        GestureKind kind;
        std::optional<PixelRegion> region;
    };
    const Row rows[]{
        {Algs::createMayBeginEvent(PixelRegion::None), GestureKind::MayBegin, PixelRegion::None},
        {Algs::createHoldStartEvent(PixelRegion::PlayPause), GestureKind::HoldStart, PixelRegion::PlayPause},
        {Algs::createHoldChangeEvent(PixelRegion::VolumeDown), GestureKind::HoldChange, PixelRegion::VolumeDown},
        {Algs::createHoldEndEvent(kUp), GestureKind::HoldEnd, PixelRegion::VolumeUp},
        {Algs::createTapEvent(kUp), GestureKind::Tap, PixelRegion::VolumeUp},
        {Algs::createCancelEvent(), GestureKind::Cancel, std::nullopt},
        {vendorDefined(0xFF60, 2), GestureKind::FirmwareReset, std::nullopt},
    };
    for (const auto& [event, kind, region] : rows) {
        IOHIDEventSetTimeStamp(event.get(), 7'000);
        IOHIDEventSetIntegerValue(event.get(), kIOHIDEventFieldDigitizerGenerationCount, 4'294'967'295);
        const auto gesture = gestureOf(*event);
        ASSERT_TRUE(gesture) << nameOf(kind);
        EXPECT_EQ(gesture->kind, kind);
        EXPECT_EQ(gesture->region, region) << nameOf(kind);
        EXPECT_EQ(gesture->frame, kind == GestureKind::FirmwareReset ? 0 : 4'294'967'295);
        EXPECT_EQ(gesture->time, std::chrono::microseconds(7));
        const EventMembers members = eventMembersOf(*gesture);
        const auto field = [given = event.get()](IOHIDEventField name) { return IOHIDEventGetFloatValue(given, name); };
        EXPECT_EQ(members.phase, IOHIDEventGetPhase(event.get())) << nameOf(kind);
        EXPECT_EQ(members.eventMask, field(kIOHIDEventFieldDigitizerEventMask)) << nameOf(kind);
        EXPECT_EQ(members.y, field(kIOHIDEventFieldDigitizerY)) << nameOf(kind);
        EXPECT_EQ(members.usagePage, field(kIOHIDEventFieldVendorDefinedUsagePage));
        EXPECT_EQ(members.usage, field(kIOHIDEventFieldVendorDefinedUsage));
        EXPECT_EQ(gestureKindCalled(nameOf(kind)), kind);
    }
}

TEST(GestureTest, WhatTheServiceDoesNotSayIsNoGestureAndAnUnknownRegionIsNone) {
    for (const Ref<HIDEvent>& event : {
             touch(kIOHIDEventPhaseUndefined, 0, 1),                     // neither a phase nor a tap
             touch(kIOHIDEventPhaseChanged, kIOHIDDigitizerEventTap, 1), // both
             touch(kIOHIDEventPhaseBegan | kIOHIDEventPhaseEnded, kIOHIDDigitizerEventTouch, 1), //
             vendorDefined(0xFF60, 1),
             vendorDefined(0xFF00, 2), // of other meaning
             IOHIDEventCreateAccelerometerEvent(nullptr, 0, 0.0, 0.0, 1.0, 0),
         })
        EXPECT_FALSE(gestureOf(*event)) << IOHIDEventCopyDescription(event.get());
    for (const double y : {4.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
        const auto gesture = gestureOf(*touch(kIOHIDEventPhaseUndefined, kIOHIDDigitizerEventTap, y));
        ASSERT_TRUE(gesture) << y;
        EXPECT_EQ(gesture->region, std::nullopt) << y;
    }
    EXPECT_FALSE(gestureKindCalled("swipe"));
}

} // namespace
} // namespace VeltoTouch::Tests
