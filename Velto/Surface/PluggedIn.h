#pragma once

#include "Platform/Linux/HidrawMonitor.h"
#include "Velto/Surface/ConnectedDevice.h"

#include <string>
#include <vector>

// The surfaces that are plugged into this machine.

namespace VeltoTouch::Surface {

// Returns the surfaces, at least one. Throws std::runtime_error if there is none.
[[nodiscard]] std::vector<HidrawNode> findSurfaces();

// Monitors the surfaces that are present, added and removed. Throws std::system_error if the kernel does not report
// changes.
[[nodiscard]] HidrawMonitor monitorSurfaces();

// Connects the surface behind a node, under the node's path, and this machine's accelerometers. Throws
// std::runtime_error if the node cannot be opened: with what to do if the user has no right to.
[[nodiscard]] ConnectedDevice connectNode(const std::string& path);

} // namespace VeltoTouch::Surface
