#include "Velto/Host/Gesture.h"

#include "Plugin/Reports/Regions.h"

#include <algorithm>
#include <array>

namespace VeltoTouch {
namespace {

// In the order of the numbers.
constexpr std::array<std::string_view, 7> kGestures{"mayBegin", "holdStart", "holdChange",   "holdEnd",
                                                    "tap",      "cancel",    "firmwareReset"};

Gesture gestureOf(const HIDEvent& event) noexcept {
    if (IOHIDEventGetType(&event) != kIOHIDEventTypeDigitizer)
        return Gesture::FirmwareReset;
    switch (IOHIDEventGetPhase(&event)) {
    case kIOHIDEventPhaseMayBegin:
        return Gesture::MayBegin;
    case kIOHIDEventPhaseBegan:
        return Gesture::HoldStart;
    case kIOHIDEventPhaseChanged:
        return Gesture::HoldChange;
    case kIOHIDEventPhaseEnded:
        return Gesture::HoldEnd;
    case kIOHIDEventPhaseCancelled:
        return Gesture::Cancel;
    default:
        return Gesture::Tap;
    }
}

std::optional<std::string_view> regionOf(const HIDEvent& event, Gesture gesture) noexcept {
    const auto number = regionNumberOf(event);
    if (gesture == Gesture::Cancel || gesture == Gesture::FirmwareReset || !number)
        return std::nullopt;
    return nameOf(static_cast<PixelRegion>(*number));
}

} // namespace

GestureEvent gestureEventOf(const HIDEvent& event) noexcept {
    const Gesture gesture = gestureOf(event);
    const auto frame = IOHIDEventGetIntegerValue(&event, kIOHIDEventFieldDigitizerGenerationCount);
    return {.gesture = gesture,
            .region = regionOf(event, gesture),
            .phase = IOHIDEventGetPhase(&event),
            .frame = static_cast<std::uint32_t>(frame)};
}

std::optional<std::size_t> regionNumberOf(const HIDEvent& event) noexcept {
    const double region = IOHIDEventGetFloatValue(&event, kIOHIDEventFieldDigitizerY);
    const bool isKnown = region >= 0.0 && region < static_cast<double>(kRegionCount);
    return isKnown ? std::optional(static_cast<std::size_t>(region)) : std::nullopt;
}

std::string_view nameOf(Gesture gesture) noexcept { return kGestures[static_cast<std::size_t>(gesture)]; }

std::optional<Gesture> gestureNamed(std::string_view name) noexcept {
    const auto* const found = std::ranges::find(kGestures, name);
    if (found == kGestures.end())
        return std::nullopt;
    return static_cast<Gesture>(found - kGestures.begin());
}

std::optional<std::string_view> regionNamed(std::string_view name) noexcept {
    const auto region = regionCalled(name);
    return region ? std::optional(nameOf(*region)) : std::nullopt;
}

} // namespace VeltoTouch
