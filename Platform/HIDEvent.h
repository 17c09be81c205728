#pragma once

#include "Platform/Object.h"

#include <span>
#include <string>
#include <variant>

// HID events: what a service sends to its host. An event is one of the payloads below, a phase and a time stamp. An
// event is filled on one thread and not changed once it is sent.

namespace VeltoTouch {

struct Digitizer {
    std::uint32_t transducerType;
    std::uint32_t index;
    std::uint32_t identity;
    std::uint32_t eventMask;
    std::uint32_t buttonMask;
    double x, y, z;
    double tipPressure;
    double barrelPressure;
    bool range;
    bool touch;
    CFIndex generationCount;
};

struct VendorDefined {
    std::uint32_t usagePage;
    std::uint32_t usage;
    std::uint32_t version;
};

// Acceleration along the axes, in units of the standard gravity.
struct Accelerometer {
    double x, y, z;
};

class HIDEvent final : public Object {
public:
    using Payload = std::variant<VendorDefined, Digitizer, Accelerometer>;
    HIDEvent(std::uint64_t stamp, std::uint32_t optionBits, const Payload& content) noexcept
        : payload(content), timeStamp(stamp), options(optionBits) {}

    Payload payload;
    std::uint64_t timeStamp; // host ticks
    std::uint32_t options;
    std::uint16_t phase = 0;
};

using IOHIDEventRef = HIDEvent*;

enum IOHIDEventType : std::uint32_t {
    kIOHIDEventTypeVendorDefined = 1,
    kIOHIDEventTypeDigitizer = 11,
    kIOHIDEventTypeAccelerometer = 13,
};

enum IOHIDEventPhase : std::uint16_t {
    kIOHIDEventPhaseUndefined = 0,
    kIOHIDEventPhaseBegan = 0x1,
    kIOHIDEventPhaseChanged = 0x2,
    kIOHIDEventPhaseEnded = 0x4,
    kIOHIDEventPhaseCancelled = 0x8,
    kIOHIDEventPhaseMayBegin = 0x80,
};

constexpr std::uint32_t kIOHIDDigitizerTransducerTypeFinger = 2;
enum IOHIDDigitizerEventMask : std::uint32_t {
    kIOHIDDigitizerEventTouch = 0x2,
    kIOHIDDigitizerEventTap = 0x20000,
};

// A field is named by its event type in the upper 16 bits and its number in the lower.
enum IOHIDEventField : std::uint32_t {
    kIOHIDEventFieldVendorDefinedUsagePage = 0x10000,
    kIOHIDEventFieldVendorDefinedUsage = 0x10001,
    kIOHIDEventFieldVendorDefinedVersion = 0x10002,
    kIOHIDEventFieldDigitizerX = 0xB0000,
    kIOHIDEventFieldDigitizerY = 0xB0001,
    kIOHIDEventFieldDigitizerZ = 0xB0002,
    kIOHIDEventFieldDigitizerTransducerType = 0xB0004,
    kIOHIDEventFieldDigitizerEventMask = 0xB0007,
    kIOHIDEventFieldDigitizerGenerationCount = 0xB001B,
    kIOHIDEventFieldAccelerometerX = 0xD0000,
    kIOHIDEventFieldAccelerometerY = 0xD0001,
    kIOHIDEventFieldAccelerometerZ = 0xD0002,
};

[[nodiscard]] Ref<HIDEvent> IOHIDEventCreateDigitizerEvent(CFTypeRef allocator, std::uint64_t timeStamp,
                                                           std::uint32_t transducerType, std::uint32_t index,
                                                           std::uint32_t identity, std::uint32_t eventMask,
                                                           std::uint32_t buttonMask, double x, double y, double z,
                                                           double tipPressure, double barrelPressure, bool range,
                                                           bool touch, std::uint32_t options);

// The payload bytes are ignored: our events have none.
[[nodiscard]] Ref<HIDEvent> IOHIDEventCreateVendorDefinedEvent(CFTypeRef allocator, std::uint64_t timeStamp,
                                                               std::uint32_t usagePage, std::uint32_t usage,
                                                               std::uint32_t version,
                                                               std::span<const std::uint8_t> payload,
                                                               std::uint32_t options);

[[nodiscard]] Ref<HIDEvent> IOHIDEventCreateAccelerometerEvent(CFTypeRef allocator, std::uint64_t timeStamp, double x,
                                                               double y, double z, std::uint32_t options);

[[nodiscard]] std::uint32_t IOHIDEventGetType(const HIDEvent* event) noexcept;
[[nodiscard]] std::uint64_t IOHIDEventGetTimeStamp(const HIDEvent* event) noexcept;
void IOHIDEventSetTimeStamp(IOHIDEventRef event, std::uint64_t timeStamp) noexcept;
// Returns 0 if the phase was never set.
[[nodiscard]] std::uint16_t IOHIDEventGetPhase(const HIDEvent* event) noexcept;
void IOHIDEventSetPhase(IOHIDEventRef event, std::uint16_t phase) noexcept;

// A field that the event does not have reads as 0 and ignores writes. Only the generation count is writable.
[[nodiscard]] CFIndex IOHIDEventGetIntegerValue(const HIDEvent* event, std::uint32_t field) noexcept;
void IOHIDEventSetIntegerValue(IOHIDEventRef event, std::uint32_t field, CFIndex value) noexcept;
[[nodiscard]] double IOHIDEventGetFloatValue(const HIDEvent* event, std::uint32_t field) noexcept;

// Describes the event in one line for a log: kind, time stamp, phase and fields.
[[nodiscard]] std::string IOHIDEventCopyDescription(const HIDEvent* event);

} // namespace VeltoTouch
