#pragma once

#include "Host/Gesture.h"
#include "Platform/HIDEvent.h"

#include <cstdint>
#include <string>

namespace VeltoTouch::Tools {

// Appends the JSON line of an event.
void appendEventLine(std::string& text, const HIDEvent& event, std::uint64_t timeNs);

// The JSON line of a gesture that was told over the bus.
[[nodiscard]] std::string gestureLine(const GestureEvent& event, std::uint64_t timeNs);

} // namespace VeltoTouch::Tools
