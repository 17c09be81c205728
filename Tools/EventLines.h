#pragma once

#include "Platform/HIDEvent.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace VeltoTouch::Tools {

enum class Gesture : std::uint8_t { MayBegin, HoldStart, HoldChange, HoldEnd, Tap, Cancel, FirmwareReset };

[[nodiscard]] Gesture gestureOf(const HIDEvent& event) noexcept;
[[nodiscard]] std::string_view nameOf(Gesture gesture) noexcept;

// The name of the region that a digitizer event carries; none for a cancel.
[[nodiscard]] std::optional<std::string_view> regionNameOf(const HIDEvent& event) noexcept;

// The device's frame number that the event carries.
[[nodiscard]] std::uint32_t frameOf(const HIDEvent& event) noexcept;

// Appends the JSON line of an event.
void appendEventLine(std::string& text, const HIDEvent& event, std::uint64_t timeNs);

} // namespace VeltoTouch::Tools
