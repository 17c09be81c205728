#pragma once

#include "Velto/Host/Gesture.h"

#include <string>
#include <string_view>

// Gestures as JSON Lines.

namespace VeltoTouch::Analysis {

// The member ,"file":"PATH" that stands behind "kind" in every line that belongs to a file; empty for an empty path.
[[nodiscard]] std::string fileMember(std::string_view path);

// Append the line of a gesture as an event, and of one received over the bus. The gesture's time is since the start.
// `inFile` is what `fileMember` returned.
void appendEventLine(std::string& text, std::string_view inFile, const Gesture& gesture);
void appendGestureLine(std::string& text, const Gesture& gesture);

} // namespace VeltoTouch::Analysis
