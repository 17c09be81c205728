#pragma once

#include "Plugin/Recording/Frame.h"

#include <list>
#include <string>

namespace VeltoTouch {

// Returns a container of the current version with these frames in their order, as compact JSON. A frame of no known
// type is left out; a value that has no JSON form, or is nested too deep to be read again, is written as
// {"Unrepresentable":"<kind>"}. Throws std::bad_alloc. Any thread.
[[nodiscard]] std::string writeContainer(const std::list<Frame>& frames);

} // namespace VeltoTouch
