#pragma once

#include "Velto/Page/RecordingPage.h"

#include <string>

namespace VeltoTouch::Page {

// Plays a recording and returns all that a page shows of it, as an object.
[[nodiscard]] std::string playObject(const Play& play, const Range& range);

} // namespace VeltoTouch::Page
