#pragma once

#include "Plugin/Reports/InputReport.h"

#include <string>

namespace VeltoTouch::Util {

// Returns the picture of an image: a header line with frame number and time, an empty line, and thirteen lines with
// each pad's value where the pad lies. `raw` shows the unsigned raw values in place of the signals. Any thread; running
// out of memory ends the process.
[[nodiscard]] std::string stringFromImage(const InputReport::Image& image, bool raw) noexcept;

} // namespace VeltoTouch::Util
