#pragma once

#include "Platform/Linux/HidrawMonitor.h"
#include "Velto/Surface/ConnectedDevice.h"

#include <string>
#include <vector>

// The surfaces that are plugged into this machine.

namespace VeltoTouch::Surface {

// At least one. Throws std::runtime_error where there is none.
[[nodiscard]] std::vector<HidrawNode> findSurfaces();

// Those that are there, and those that come and go. Throws std::system_error where the kernel tells no news.
[[nodiscard]] HidrawMonitor monitorSurfaces();

// The surface behind a node, under the node's path, and this machine's accelerometers. Throws std::system_error where
// the node cannot be opened.
[[nodiscard]] ConnectedDevice connectNode(const std::string& path);

} // namespace VeltoTouch::Surface
