#include "Velto/Analysis/EventLines.h"

#include "Platform/JSON.h"
#include "Plugin/Reports/Regions.h"
#include "Velto/Analysis/LineMembers.h"

#include <iterator>

#include <fmt/format.h>

namespace VeltoTouch::Analysis {
namespace {

void appendStart(std::string& text, std::string_view kind, std::string_view inFile, const Gesture& gesture) {
    fmt::format_to(std::back_inserter(text), R"({{"kind":"{}"{},"timeNs":{},"gesture":"{}")", kind, inFile,
                   gesture.time.count(), nameOf(gesture.kind));
}

void appendTouch(std::string& text, const Gesture& gesture) {
    fmt::format_to(std::back_inserter(text), R"(,"frame":{},"region":{},"phase":{})", gesture.frame,
                   nameOrNull(gesture.region), eventMembersOf(gesture).phase);
}

} // namespace

std::string fileMember(std::string_view path) { return path.empty() ? "" : R"(,"file":)" + JSON::quoted(path); }

void appendEventLine(std::string& text, std::string_view inFile, const Gesture& gesture) {
    const EventMembers event = eventMembersOf(gesture);
    appendStart(text, "event", inFile, gesture);
    if (gesture.kind == GestureKind::FirmwareReset) {
        fmt::format_to(std::back_inserter(text), R"(,"usagePage":{},"usage":{})", event.usagePage, event.usage);
    } else {
        appendTouch(text, gesture);
        fmt::format_to(std::back_inserter(text), R"(,"eventMask":{},"y":{:.1f})", event.eventMask, event.y);
    }
    text += "}\n";
}

void appendGestureLine(std::string& text, const Gesture& gesture) {
    appendStart(text, "gesture", "", gesture);
    appendTouch(text, gesture);
    text += "}\n";
}

} // namespace VeltoTouch::Analysis
