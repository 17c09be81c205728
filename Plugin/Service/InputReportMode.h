#pragma once

#include "Platform/Value.h"

namespace VeltoTouch {

// The run loop's mode in which the input-report thread handles its reports and samples, and nothing else. Lives until
// the process ends: a thread may use it that long.
[[nodiscard]] inline CFStringRef inputReportMode() {
    static const auto* const mode = new String("kHandleInputReportsRunLoopMode");
    return mode;
}

} // namespace VeltoTouch
