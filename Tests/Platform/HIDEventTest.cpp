#include "Platform/HIDEvent.h"

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

class HIDEventTest : public testing::Test {
protected:
    const Ref<HIDEvent> digitizer =
        IOHIDEventCreateDigitizerEvent(nullptr, 1, 2, 3, 4, 5, 6, 7.5, 8.5, 9.5, 10.5, 11.5, true, false, 12);
    const Ref<HIDEvent> vendorDefined = IOHIDEventCreateVendorDefinedEvent(nullptr, 1, 0xFF60, 2, 3, {}, 4);
    const Ref<HIDEvent> accelerometer = IOHIDEventCreateAccelerometerEvent(nullptr, 7, 0.25, -0.5, -1, 0);
};

TEST_F(HIDEventTest, FieldsReadTheirOwnEventsAndAreZeroForOthers) {
    struct Row {
        std::uint32_t field;
        double digitizer, vendorDefined, accelerometer;
    };
    for (const Row& row : {
             Row{kIOHIDEventFieldVendorDefinedUsagePage, 0, 0xFF60, 0},
             Row{kIOHIDEventFieldVendorDefinedUsage, 0, 2, 0},
             Row{kIOHIDEventFieldVendorDefinedVersion, 0, 3, 0},
             Row{kIOHIDEventFieldDigitizerX, 7.5, 0, 0},
             Row{kIOHIDEventFieldDigitizerY, 8.5, 0, 0},
             Row{kIOHIDEventFieldDigitizerZ, 9.5, 0, 0},
             Row{kIOHIDEventFieldDigitizerTransducerType, 2, 0, 0},
             Row{kIOHIDEventFieldDigitizerEventMask, 5, 0, 0},
             Row{kIOHIDEventFieldDigitizerGenerationCount, 0, 0, 0},
             Row{kIOHIDEventFieldAccelerometerX, 0, 0, 0.25},
             Row{kIOHIDEventFieldAccelerometerY, 0, 0, -0.5},
             Row{kIOHIDEventFieldAccelerometerZ, 0, 0, -1},
             Row{0xB0FFF, 0, 0, 0},
         }) {
        SCOPED_TRACE(testing::Message() << "field 0x" << std::hex << row.field);
        EXPECT_EQ(IOHIDEventGetFloatValue(digitizer.get(), row.field), row.digitizer);
        EXPECT_EQ(IOHIDEventGetFloatValue(vendorDefined.get(), row.field), row.vendorDefined);
        EXPECT_EQ(IOHIDEventGetFloatValue(accelerometer.get(), row.field), row.accelerometer);
    }
}

TEST_F(HIDEventTest, OnlyGenerationCountPhaseAndTimeAreWritable) {
    constexpr std::uint32_t kCount = kIOHIDEventFieldDigitizerGenerationCount;
    for (const Ref<HIDEvent>& event : {digitizer, vendorDefined}) {
        IOHIDEventSetIntegerValue(event.get(), kCount, 4294967295);
        IOHIDEventSetIntegerValue(event.get(), kIOHIDEventFieldDigitizerEventMask, 77);
    }
    EXPECT_EQ(IOHIDEventGetIntegerValue(digitizer.get(), kCount), 4294967295);
    EXPECT_EQ(IOHIDEventGetIntegerValue(digitizer.get(), kIOHIDEventFieldDigitizerEventMask), 5);
    EXPECT_EQ(IOHIDEventGetIntegerValue(vendorDefined.get(), kCount), 0);
    IOHIDEventSetTimeStamp(digitizer.get(), 8);
    IOHIDEventSetPhase(digitizer.get(), kIOHIDEventPhaseMayBegin);
    EXPECT_EQ(IOHIDEventGetTimeStamp(digitizer.get()), 8U);
    EXPECT_EQ(IOHIDEventGetPhase(digitizer.get()), kIOHIDEventPhaseMayBegin);
    EXPECT_EQ(IOHIDEventCopyDescription(digitizer.get()),
              "<digitizer, event mask 0x5, x 7.5, y 8.5, z 9.5, generation 4294967295, phase 0x80, time 8>");
}

TEST_F(HIDEventTest, TypeAndDescriptionNameTheKind) {
    EXPECT_EQ(IOHIDEventGetType(vendorDefined.get()), 1U);
    EXPECT_EQ(IOHIDEventGetType(digitizer.get()), 11U);
    EXPECT_EQ(IOHIDEventGetType(accelerometer.get()), 13U);
    EXPECT_EQ(IOHIDEventCopyDescription(vendorDefined.get()),
              "<vendor-defined, usage page 0xff60, usage 0x2, version 3, phase 0x0, time 1>");
    EXPECT_EQ(IOHIDEventCopyDescription(accelerometer.get()),
              "<accelerometer, x 0.250, y -0.500, z -1.000, phase 0x0, time 7>");
}

} // namespace
} // namespace VeltoTouch::Tests
