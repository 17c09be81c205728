#pragma once

#include "Platform/HIDEvent.h"
#include "Velto/Host/Gesture.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace VeltoTouch::Velto {

// The member ,"file":"PATH" that stands behind "kind" in every line that belongs to a file; empty for an empty path.
[[nodiscard]] std::string fileMember(std::string_view path);

// Appends the JSON line of an event. `file`: what `fileMember` returned.
void appendEventLine(std::string& text, std::string_view file, const HIDEvent& event, std::uint64_t timeNs);

// The JSON line of a gesture that was told over the bus.
[[nodiscard]] std::string gestureLine(const GestureEvent& event, std::uint64_t timeNs);

} // namespace VeltoTouch::Velto
