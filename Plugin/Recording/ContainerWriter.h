#pragma once

#include "Plugin/Recording/Frame.h"

#include <list>
#include <string>
#include <string_view>

namespace VeltoTouch {

// Returns a container of the current version with these frames in their order, as compact JSON. A frame of no known
// type is left out; a value that has no JSON form, or is nested too deep to be read again, is written as
// {"Unrepresentable":"<kind>"}. Throws std::bad_alloc. Any thread.
[[nodiscard]] std::string writeContainer(const std::list<Frame>& frames);

// The same text in pieces, for a container that grows: what it begins with, the frames with a comma behind each but the
// last, what it ends with.
inline constexpr std::string_view kContainerBeginning = R"({"Frames":[)";
inline constexpr std::string_view kContainerEnding = R"(],"Version":2})";

// Appends a frame and a comma; nothing for a frame of no known type. Throws std::bad_alloc. Any thread.
void appendFrame(std::string& text, const Frame& frame);

} // namespace VeltoTouch
