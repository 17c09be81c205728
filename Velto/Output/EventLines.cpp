#include "Velto/Output/EventLines.h"

#include "Platform/JSON.h"

#include <iterator>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

std::string regionText(const GestureEvent& event) {
    return event.region ? fmt::format("\"{}\"", *event.region) : "null";
}

} // namespace

std::string fileMember(std::string_view path) {
    if (path.empty())
        return {};
    std::string member = R"(,"file":)";
    JSON::appendString(member, path);
    return member;
}

void appendEventLine(std::string& text, std::string_view file, const HIDEvent& event, std::uint64_t timeNs) {
    const GestureEvent read = gestureEventOf(event);
    const auto out = std::back_inserter(text);
    fmt::format_to(out, R"({{"kind":"event"{},"timeNs":{},"gesture":"{}")", file, timeNs, nameOf(read.gesture));
    if (read.gesture == Gesture::FirmwareReset) {
        fmt::format_to(out, R"(,"usagePage":{},"usage":{})",
                       IOHIDEventGetIntegerValue(&event, kIOHIDEventFieldVendorDefinedUsagePage),
                       IOHIDEventGetIntegerValue(&event, kIOHIDEventFieldVendorDefinedUsage));
    } else {
        fmt::format_to(out, R"(,"frame":{},"region":{},"phase":{},"eventMask":{},"y":{:.1f})", read.frame,
                       regionText(read), read.phase,
                       IOHIDEventGetIntegerValue(&event, kIOHIDEventFieldDigitizerEventMask),
                       IOHIDEventGetFloatValue(&event, kIOHIDEventFieldDigitizerY));
    }
    text += "}\n";
}

std::string gestureLine(const GestureEvent& event, std::uint64_t timeNs) {
    return fmt::format(R"({{"kind":"gesture","timeNs":{},"gesture":"{}","frame":{},"region":{},"phase":{}}})", timeNs,
                       nameOf(event.gesture), event.frame, regionText(event), event.phase) +
           "\n";
}

} // namespace VeltoTouch::Velto
