#pragma once

#include "Platform/HIDEvent.h"
#include "Plugin/Reports/Regions.h"
#include "Velto/Host/HostTime.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

// Gestures of the touch service. An event is translated into a `Gesture` here, once. Code above Host handles gestures,
// never events.

namespace VeltoTouch {

enum class GestureKind : std::uint8_t { MayBegin, HoldStart, HoldChange, HoldEnd, Tap, Cancel, FirmwareReset };

struct Gesture {
    GestureKind kind;
    // None for a cancel, a firmware reset, and if the event's y is no region's number.
    std::optional<PixelRegion> region;
    std::uint32_t frame = 0; // the device's frame number; 0 for a firmware reset
    HostTime time{};         // of its report
};

// Returns the name of a gesture's region; empty if it has none.
[[nodiscard]] constexpr std::string_view regionNameOf(const Gesture& gesture) noexcept {
    return gesture.region ? nameOf(*gesture.region) : "";
}

// Returns nothing for an event that is no gesture of the surface.
[[nodiscard]] std::optional<Gesture> gestureOf(const HIDEvent& event) noexcept;

// Replaces the content of `gestures` with the gestures among the events, in order.
void translateEvents(std::span<const Ref<HIDEvent>> events, std::vector<Gesture>& gestures);

// The members of a gesture's event. They follow from kind and region.
struct EventMembers {
    std::uint32_t phase;
    std::uint32_t eventMask;
    double y;
    std::uint32_t usagePage; // of a firmware reset; 0 for all others
    std::uint32_t usage;     // likewise
};
[[nodiscard]] EventMembers eventMembersOf(const Gesture& gesture) noexcept;

// Returns the name that lines and the message bus use: mayBegin, holdStart, ...
[[nodiscard]] std::string_view nameOf(GestureKind kind) noexcept;
// Returns nothing for any other name.
[[nodiscard]] std::optional<GestureKind> gestureKindCalled(std::string_view name) noexcept;

} // namespace VeltoTouch
