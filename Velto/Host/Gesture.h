#pragma once

#include "Platform/HIDEvent.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

// What a host reads in the events of the touch service.

namespace VeltoTouch {

enum class Gesture : std::uint8_t { MayBegin, HoldStart, HoldChange, HoldEnd, Tap, Cancel, FirmwareReset };

struct GestureEvent {
    Gesture gesture;
    std::optional<std::string_view> region; // its name, with static storage; none for a cancel and a firmware reset
    std::uint32_t phase;                    // kIOHIDEventPhase...
    std::uint32_t frame;                    // the device's frame number; 0 for a firmware reset
};

[[nodiscard]] GestureEvent gestureEventOf(const HIDEvent& event) noexcept;

// The number of the region that a digitizer event carries in its y; none for one that is not known.
[[nodiscard]] std::optional<std::size_t> regionNumberOf(const HIDEvent& event) noexcept;

// mayBegin, holdStart, ...
[[nodiscard]] std::string_view nameOf(Gesture gesture) noexcept;
// The gesture and the region with this name; none for any other.
[[nodiscard]] std::optional<Gesture> gestureNamed(std::string_view name) noexcept;
[[nodiscard]] std::optional<std::string_view> regionNamed(std::string_view name) noexcept;

} // namespace VeltoTouch
