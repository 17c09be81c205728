#include "Tools/EventLines.h"

#include "Host/Gesture.h"

#include <iterator>

#include <fmt/format.h>

namespace VeltoTouch::Tools {

void appendEventLine(std::string& text, const HIDEvent& event, std::uint64_t timeNs) {
    const GestureEvent read = gestureEventOf(event);
    const auto out = std::back_inserter(text);
    fmt::format_to(out, R"({{"kind":"event","timeNs":{},"gesture":"{}")", timeNs, nameOf(read.gesture));
    if (read.gesture == Gesture::FirmwareReset) {
        fmt::format_to(out, R"(,"usagePage":{},"usage":{})",
                       IOHIDEventGetIntegerValue(&event, kIOHIDEventFieldVendorDefinedUsagePage),
                       IOHIDEventGetIntegerValue(&event, kIOHIDEventFieldVendorDefinedUsage));
    } else {
        fmt::format_to(out, R"(,"frame":{},"region":{},"phase":{},"eventMask":{},"y":{:.1f})", read.frame,
                       read.region ? fmt::format("\"{}\"", *read.region) : "null", read.phase,
                       IOHIDEventGetIntegerValue(&event, kIOHIDEventFieldDigitizerEventMask),
                       IOHIDEventGetFloatValue(&event, kIOHIDEventFieldDigitizerY));
    }
    text += "}\n";
}

} // namespace VeltoTouch::Tools
