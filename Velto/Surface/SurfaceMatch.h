#pragma once

#include "Platform/Linux/ReportDescriptor.h"

namespace VeltoTouch::Surface {

// Whether the device with this report descriptor is the surface: it has the primary usage of ReportDescriptor.h beside
// it and every input and feature report that is declared there, as long as there. Reports beyond those do no harm: a
// newer firmware may have more.
[[nodiscard]] bool isSurface(const ReportDescriptor& descriptor);

} // namespace VeltoTouch::Surface
