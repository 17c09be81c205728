#include "Platform/HIDEvent.h"

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

Ref<HIDEvent> digitizerEvent() {
    return IOHIDEventCreateDigitizerEvent(nullptr, 1, 2, 3, 4, 5, 6, 7.5, 8.5, 9.5, 10.5, 11.5, true, false, 12);
}

Ref<HIDEvent> vendorDefinedEvent() { return IOHIDEventCreateVendorDefinedEvent(nullptr, 1, 0xFF60, 2, 3, {}, 4); }

Ref<HIDEvent> accelerometerEvent() { return IOHIDEventCreateAccelerometerEvent(nullptr, 7, 0.25, -0.5, -1, 0); }

TEST(HIDEventTest, FieldsReadTheirOwnEventsAndAreZeroForOthers) {
    struct Row {
        std::uint32_t field;
        double digitizer, vendorDefined, accelerometer;
    };
    const Row rows[]{
        {kIOHIDEventFieldVendorDefinedUsagePage, 0, 0xFF60, 0},
        {kIOHIDEventFieldVendorDefinedUsage, 0, 2, 0},
        {kIOHIDEventFieldVendorDefinedVersion, 0, 3, 0},
        {kIOHIDEventFieldDigitizerX, 7.5, 0, 0},
        {kIOHIDEventFieldDigitizerY, 8.5, 0, 0},
        {kIOHIDEventFieldDigitizerZ, 9.5, 0, 0},
        {kIOHIDEventFieldDigitizerTransducerType, 2, 0, 0},
        {kIOHIDEventFieldDigitizerEventMask, 5, 0, 0},
        {kIOHIDEventFieldDigitizerGenerationCount, 0, 0, 0},
        {kIOHIDEventFieldAccelerometerX, 0, 0, 0.25},
        {kIOHIDEventFieldAccelerometerY, 0, 0, -0.5},
        {kIOHIDEventFieldAccelerometerZ, 0, 0, -1},
        {0xB0FFF, 0, 0, 0},
        {0xD0FFF, 0, 0, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << "field 0x" << std::hex << row.field);
        EXPECT_EQ(IOHIDEventGetFloatValue(digitizerEvent().get(), row.field), row.digitizer);
        EXPECT_EQ(IOHIDEventGetFloatValue(vendorDefinedEvent().get(), row.field), row.vendorDefined);
        EXPECT_EQ(IOHIDEventGetFloatValue(accelerometerEvent().get(), row.field), row.accelerometer);
    }
}

TEST(HIDEventTest, OnlyADigitizersGenerationCountIsWritableAndHoldsEvery32BitNumber) {
    constexpr std::uint32_t kCount = kIOHIDEventFieldDigitizerGenerationCount;
    const auto digitizer = digitizerEvent();
    IOHIDEventSetIntegerValue(digitizer.get(), kCount, 4294967295);
    IOHIDEventSetIntegerValue(digitizer.get(), kIOHIDEventFieldDigitizerEventMask, 77);
    EXPECT_EQ(IOHIDEventGetIntegerValue(digitizer.get(), kCount), 4294967295);
    EXPECT_EQ(IOHIDEventGetIntegerValue(digitizer.get(), kIOHIDEventFieldDigitizerEventMask), 5);

    const auto vendorDefined = vendorDefinedEvent();
    IOHIDEventSetIntegerValue(vendorDefined.get(), kCount, 1);
    EXPECT_EQ(IOHIDEventGetIntegerValue(vendorDefined.get(), kCount), 0);
}

TEST(HIDEventTest, TypesTimeStampsAndPhasesAreTheEventsOwn) {
    EXPECT_EQ(IOHIDEventGetType(vendorDefinedEvent().get()), 1U);
    EXPECT_EQ(IOHIDEventGetType(digitizerEvent().get()), 11U);
    const auto event = accelerometerEvent();
    EXPECT_EQ(IOHIDEventGetType(event.get()), 13U);
    EXPECT_EQ(IOHIDEventGetTimeStamp(event.get()), 7U);
    EXPECT_EQ(IOHIDEventGetPhase(event.get()), 0);
    IOHIDEventSetTimeStamp(event.get(), 8);
    IOHIDEventSetPhase(event.get(), kIOHIDEventPhaseChanged);
    EXPECT_EQ(IOHIDEventGetTimeStamp(event.get()), 8U);
    EXPECT_EQ(IOHIDEventGetPhase(event.get()), kIOHIDEventPhaseChanged);
}

TEST(HIDEventTest, ADescriptionNamesTheKindAndItsFields) {
    const auto finger = digitizerEvent();
    IOHIDEventSetIntegerValue(finger.get(), kIOHIDEventFieldDigitizerGenerationCount, 17);
    IOHIDEventSetPhase(finger.get(), kIOHIDEventPhaseMayBegin);
    EXPECT_EQ(IOHIDEventCopyDescription(finger.get()),
              "<digitizer, event mask 0x5, x 7.5, y 8.5, z 9.5, generation 17, phase 0x80, time 1>");
    EXPECT_EQ(IOHIDEventCopyDescription(vendorDefinedEvent().get()),
              "<vendor-defined, usage page 0xff60, usage 0x2, version 3, phase 0x0, time 1>");
    EXPECT_EQ(IOHIDEventCopyDescription(accelerometerEvent().get()),
              "<accelerometer, x 0.250, y -0.500, z -1.000, phase 0x0, time 7>");
}

} // namespace
} // namespace VeltoTouch::Tests
