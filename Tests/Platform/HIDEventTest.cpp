#include "Platform/HIDEvent.h"

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

Ref<HIDEvent> digitizerEvent() {
    return IOHIDEventCreateDigitizerEvent(nullptr, 1, 2, 3, 4, 5, 6, 7.5, 8.5, 9.5, 10.5, 11.5, true, false, 12);
}

Ref<HIDEvent> vendorDefinedEvent() { return IOHIDEventCreateVendorDefinedEvent(nullptr, 1, 0xFF60, 2, 3, {}, 4); }

TEST(HIDEventTest, FieldsReadTheirOwnEventsAndAreZeroForOthers) {
    struct Row {
        std::uint32_t field;
        double digitizer, vendorDefined;
    };
    const Row rows[]{
        {kIOHIDEventFieldVendorDefinedUsagePage, 0, 0xFF60},
        {kIOHIDEventFieldVendorDefinedUsage, 0, 2},
        {kIOHIDEventFieldVendorDefinedVersion, 0, 3},
        {kIOHIDEventFieldDigitizerX, 7.5, 0},
        {kIOHIDEventFieldDigitizerY, 8.5, 0},
        {kIOHIDEventFieldDigitizerZ, 9.5, 0},
        {kIOHIDEventFieldDigitizerTransducerType, 2, 0},
        {kIOHIDEventFieldDigitizerEventMask, 5, 0},
        {kIOHIDEventFieldDigitizerGenerationCount, 0, 0},
        {0xB0FFF, 0, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << "field 0x" << std::hex << row.field);
        EXPECT_EQ(IOHIDEventGetFloatValue(digitizerEvent().get(), row.field), row.digitizer);
        EXPECT_EQ(IOHIDEventGetFloatValue(vendorDefinedEvent().get(), row.field), row.vendorDefined);
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

} // namespace
} // namespace VeltoTouch::Tests
