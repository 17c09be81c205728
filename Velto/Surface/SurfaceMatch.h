#pragma once

#include "Platform/Linux/ReportDescriptor.h"

namespace VeltoTouch::Surface {

// Returns whether the device with this report descriptor is the surface: it has the primary usage of ReportDescriptor.h
// beside this file and every input and feature report declared there, of the same length. Further reports are allowed:
// a newer firmware may have more.
[[nodiscard]] bool isSurface(const ReportDescriptor& descriptor);

} // namespace VeltoTouch::Surface
