#include "Platform/HIDEvent.h"

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

std::uint32_t IOHIDEventGetType(const HIDEvent* event) noexcept {
    return std::holds_alternative<Digitizer>(event->payload) ? kIOHIDEventTypeDigitizer : kIOHIDEventTypeVendorDefined;
}

std::uint64_t IOHIDEventGetTimeStamp(const HIDEvent* event) noexcept { return event->timeStamp; }

void IOHIDEventSetTimeStamp(IOHIDEventRef event, std::uint64_t timeStamp) noexcept { event->timeStamp = timeStamp; }

std::uint16_t IOHIDEventGetPhase(const HIDEvent* event) noexcept { return event->phase; }

void IOHIDEventSetPhase(IOHIDEventRef event, std::uint16_t phase) noexcept { event->phase = phase; }

CFIndex IOHIDEventGetIntegerValue(const HIDEvent* event, std::uint32_t field) noexcept {
    return static_cast<CFIndex>(IOHIDEventGetFloatValue(event, field));
}

void IOHIDEventSetIntegerValue(IOHIDEventRef event, std::uint32_t field, CFIndex value) noexcept {
    if (auto* digitizer = std::get_if<Digitizer>(&event->payload);
        digitizer != nullptr && field == kIOHIDEventFieldDigitizerGenerationCount)
        digitizer->generationCount = value;
}

double IOHIDEventGetFloatValue(const HIDEvent* event, std::uint32_t field) noexcept {
    return std::visit([field](const auto& payload) { return fieldOf(payload, field); }, event->payload);
}

} // namespace VeltoTouch
