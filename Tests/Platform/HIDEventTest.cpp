#include "Platform/HIDEvent.h"

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

Ref<HIDEvent> digitizerEvent() {
    return IOHIDEventCreateDigitizerEvent(nullptr, 1, 2, 3, 4, 5, 6, 7.5, 8.5, 9.5, 10.5, 11.5, true, false, 12);
}

Ref<HIDEvent> vendorDefinedEvent() { return IOHIDEventCreateVendorDefinedEvent(nullptr, 1, 0xFF60, 2, 3, {}, 4); }

TEST(HIDEventTest, DigitizerArgumentsLandInTheirFields) {
    const auto event = digitizerEvent();
    EXPECT_EQ(IOHIDEventGetType(event.get()), kIOHIDEventTypeDigitizer);
    EXPECT_EQ(IOHIDEventGetTimeStamp(event.get()), 1U);
    EXPECT_EQ(event->options, 12U);
    EXPECT_THAT(std::get<Digitizer>(event->payload),
                testing::FieldsAre(2, 3, 4, 5, 6, 7.5, 8.5, 9.5, 10.5, 11.5, true, false, 0));
}

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
    const auto digitizer = digitizerEvent();
    const auto vendorDefined = vendorDefinedEvent();
    EXPECT_EQ(IOHIDEventGetType(vendorDefined.get()), kIOHIDEventTypeVendorDefined);
    EXPECT_EQ(vendorDefined->options, 4U);
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << "field 0x" << std::hex << row.field);
        EXPECT_EQ(IOHIDEventGetFloatValue(digitizer.get(), row.field), row.digitizer);
        EXPECT_EQ(IOHIDEventGetFloatValue(vendorDefined.get(), row.field), row.vendorDefined);
        EXPECT_EQ(IOHIDEventGetIntegerValue(digitizer.get(), row.field), static_cast<CFIndex>(row.digitizer));
    }
}

TEST(HIDEventTest, PhaseIsZeroUntilSetAndTheTimeStampIsReplaced) {
    const auto event = digitizerEvent();
    EXPECT_EQ(IOHIDEventGetPhase(event.get()), 0U);
    IOHIDEventSetPhase(event.get(), kIOHIDEventPhaseMayBegin);
    EXPECT_EQ(IOHIDEventGetPhase(event.get()), 0x80U);
    IOHIDEventSetTimeStamp(event.get(), 1ULL << 63U);
    EXPECT_EQ(IOHIDEventGetTimeStamp(event.get()), 1ULL << 63U);
}

TEST(HIDEventTest, TheGenerationCountAloneIsWritableAndHoldsEvery32BitNumber) {
    const auto digitizer = digitizerEvent();
    IOHIDEventSetIntegerValue(digitizer.get(), kIOHIDEventFieldDigitizerGenerationCount, 4294967295);
    IOHIDEventSetIntegerValue(digitizer.get(), kIOHIDEventFieldDigitizerEventMask, 77);
    EXPECT_EQ(IOHIDEventGetIntegerValue(digitizer.get(), kIOHIDEventFieldDigitizerGenerationCount), 4294967295);
    EXPECT_EQ(IOHIDEventGetIntegerValue(digitizer.get(), kIOHIDEventFieldDigitizerEventMask), 5);

    const auto vendorDefined = vendorDefinedEvent();
    IOHIDEventSetIntegerValue(vendorDefined.get(), kIOHIDEventFieldDigitizerGenerationCount, 1);
    EXPECT_EQ(IOHIDEventGetIntegerValue(vendorDefined.get(), kIOHIDEventFieldDigitizerGenerationCount), 0);
}

} // namespace
} // namespace VeltoTouch::Tests
