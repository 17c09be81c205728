#include "Platform/HIDEvent.h"

#include "Platform/Value.h"

#include <fmt/format.h>

namespace VeltoTouch {
namespace {

double fieldOf(const VendorDefined& event, std::uint32_t field) noexcept {
    switch (field) {
    case kIOHIDEventFieldVendorDefinedUsagePage:
        return event.usagePage;
    case kIOHIDEventFieldVendorDefinedUsage:
        return event.usage;
    case kIOHIDEventFieldVendorDefinedVersion:
        return event.version;
    default:
        return 0.0;
    }
}

double fieldOf(const Digitizer& event, std::uint32_t field) noexcept {
    switch (field) {
    case kIOHIDEventFieldDigitizerX:
        return event.x;
    case kIOHIDEventFieldDigitizerY:
        return event.y;
    case kIOHIDEventFieldDigitizerZ:
        return event.z;
    case kIOHIDEventFieldDigitizerTransducerType:
        return event.transducerType;
    case kIOHIDEventFieldDigitizerEventMask:
        return event.eventMask;
    case kIOHIDEventFieldDigitizerGenerationCount:
        return static_cast<double>(event.generationCount);
    default:
        return 0.0;
    }
}

double fieldOf(const Accelerometer& event, std::uint32_t field) noexcept {
    switch (field) {
    case kIOHIDEventFieldAccelerometerX:
        return event.x;
    case kIOHIDEventFieldAccelerometerY:
        return event.y;
    case kIOHIDEventFieldAccelerometerZ:
        return event.z;
    default:
        return 0.0;
    }
}

constexpr std::uint32_t typeOf(const VendorDefined& /*event*/) noexcept { return kIOHIDEventTypeVendorDefined; }
constexpr std::uint32_t typeOf(const Digitizer& /*event*/) noexcept { return kIOHIDEventTypeDigitizer; }
constexpr std::uint32_t typeOf(const Accelerometer& /*event*/) noexcept { return kIOHIDEventTypeAccelerometer; }

std::string textOf(const VendorDefined& event) {
    return fmt::format("vendor-defined, usage page {:#x}, usage {:#x}, version {}", event.usagePage, event.usage,
                       event.version);
}
std::string textOf(const Digitizer& event) {
    return fmt::format("digitizer, event mask {:#x}, x {:.1f}, y {:.1f}, z {:.1f}, generation {}", event.eventMask,
                       event.x, event.y, event.z, event.generationCount);
}
std::string textOf(const Accelerometer& event) {
    return fmt::format("accelerometer, x {:.3f}, y {:.3f}, z {:.3f}", event.x, event.y, event.z);
}

} // namespace

Ref<HIDEvent> IOHIDEventCreateDigitizerEvent(CFTypeRef /*allocator*/, std::uint64_t timeStamp,
                                             std::uint32_t transducerType, std::uint32_t index, std::uint32_t identity,
                                             std::uint32_t eventMask, std::uint32_t buttonMask, double x, double y,
                                             double z, double tipPressure, double barrelPressure, bool range,
                                             bool touch, std::uint32_t options) {
    return makeRef<HIDEvent>(timeStamp, options,
                             Digitizer{.transducerType = transducerType,
                                       .index = index,
                                       .identity = identity,
                                       .eventMask = eventMask,
                                       .buttonMask = buttonMask,
                                       .x = x,
                                       .y = y,
                                       .z = z,
                                       .tipPressure = tipPressure,
                                       .barrelPressure = barrelPressure,
                                       .range = range,
                                       .touch = touch,
                                       .generationCount = 0});
}

Ref<HIDEvent> IOHIDEventCreateVendorDefinedEvent(CFTypeRef /*allocator*/, std::uint64_t timeStamp,
                                                 std::uint32_t usagePage, std::uint32_t usage, std::uint32_t version,
                                                 std::span<const std::uint8_t> /*payload*/, std::uint32_t options) {
    return makeRef<HIDEvent>(timeStamp, options,
                             VendorDefined{.usagePage = usagePage, .usage = usage, .version = version});
}

Ref<HIDEvent> IOHIDEventCreateAccelerometerEvent(CFTypeRef /*allocator*/, std::uint64_t timeStamp, double x, double y,
                                                 double z, std::uint32_t options) {
    return makeRef<HIDEvent>(timeStamp, options, Accelerometer{.x = x, .y = y, .z = z});
}

std::uint32_t IOHIDEventGetType(const HIDEvent* event) noexcept {
    return std::visit([](const auto& payload) { return typeOf(payload); }, event->payload);
}

std::uint64_t IOHIDEventGetTimeStamp(const HIDEvent* event) noexcept { return event->timeStamp; }

void IOHIDEventSetTimeStamp(IOHIDEventRef event, std::uint64_t timeStamp) noexcept { event->timeStamp = timeStamp; }

std::uint16_t IOHIDEventGetPhase(const HIDEvent* event) noexcept { return event->phase; }

void IOHIDEventSetPhase(IOHIDEventRef event, std::uint16_t phase) noexcept { event->phase = phase; }

CFIndex IOHIDEventGetIntegerValue(const HIDEvent* event, std::uint32_t field) noexcept {
    return Number(IOHIDEventGetFloatValue(event, field)).longLongValue();
}

void IOHIDEventSetIntegerValue(IOHIDEventRef event, std::uint32_t field, CFIndex value) noexcept {
    if (auto* digitizer = std::get_if<Digitizer>(&event->payload);
        digitizer != nullptr && field == kIOHIDEventFieldDigitizerGenerationCount)
        digitizer->generationCount = value;
}

double IOHIDEventGetFloatValue(const HIDEvent* event, std::uint32_t field) noexcept {
    return std::visit([field](const auto& payload) { return fieldOf(payload, field); }, event->payload);
}

std::string IOHIDEventCopyDescription(const HIDEvent* event) {
    const std::string fields = std::visit([](const auto& payload) { return textOf(payload); }, event->payload);
    return fmt::format("<{}, phase {:#x}, time {}>", fields, event->phase, event->timeStamp);
}

} // namespace VeltoTouch
