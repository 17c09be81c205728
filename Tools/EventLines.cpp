#include "Tools/EventLines.h"

#include "Platform/JSON.h"

#include <array>
#include <iterator>

#include <fmt/format.h>

namespace VeltoTouch::Tools {

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

std::string_view nameOf(Gesture gesture) noexcept {
    static constexpr std::array<std::string_view, 7> kNames{"mayBegin", "holdStart", "holdChange",   "holdEnd",
                                                            "tap",      "cancel",    "firmwareReset"};
    return kNames[static_cast<std::size_t>(gesture)];
}

std::optional<std::string_view> regionNameOf(const HIDEvent& event) noexcept {
    static constexpr std::array<std::string_view, 4> kNames{"None", "PlayPause", "VolumeDown", "VolumeUp"};
    const auto region = static_cast<std::size_t>(IOHIDEventGetFloatValue(&event, kIOHIDEventFieldDigitizerY));
    const Gesture gesture = gestureOf(event);
    if (gesture == Gesture::Cancel || gesture == Gesture::FirmwareReset || region >= kNames.size())
        return std::nullopt;
    return kNames[region];
}

std::uint32_t frameOf(const HIDEvent& event) noexcept {
    return static_cast<std::uint32_t>(IOHIDEventGetIntegerValue(&event, kIOHIDEventFieldDigitizerGenerationCount));
}

void appendEventLine(std::string& text, const HIDEvent& event, std::uint64_t timeNs) {
    const Gesture gesture = gestureOf(event);
    const auto out = std::back_inserter(text);
    fmt::format_to(out, R"({{"kind":"event","timeNs":{},"gesture":"{}")", timeNs, nameOf(gesture));
    if (gesture == Gesture::FirmwareReset) {
        fmt::format_to(out, R"(,"usagePage":{},"usage":{})",
                       IOHIDEventGetIntegerValue(&event, kIOHIDEventFieldVendorDefinedUsagePage),
                       IOHIDEventGetIntegerValue(&event, kIOHIDEventFieldVendorDefinedUsage));
    } else {
        const auto region = regionNameOf(event);
        fmt::format_to(out, R"(,"frame":{},"region":{},"phase":{},"eventMask":{},"y":{:.1f})", frameOf(event),
                       region ? fmt::format("\"{}\"", *region) : "null", IOHIDEventGetPhase(&event),
                       IOHIDEventGetIntegerValue(&event, kIOHIDEventFieldDigitizerEventMask),
                       IOHIDEventGetFloatValue(&event, kIOHIDEventFieldDigitizerY));
    }
    text += "}\n";
}

} // namespace VeltoTouch::Tools
