#pragma once

#include "Platform/Value.h"

namespace VeltoTouch {

// Returns the run loop's mode in which the input-report thread handles its reports and samples, and nothing else. Never
// destroyed: a thread may use it until the process ends.
[[nodiscard]] inline CFStringRef inputReportMode() {
    static const auto* const mode = new String("kHandleInputReportsRunLoopMode");
    return mode;
}

} // namespace VeltoTouch
