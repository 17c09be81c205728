#pragma once

#include "Velto/Host/HostedService.h"
#include "Velto/Options/App.h"
#include "Velto/Surface/ConnectedDevice.h"

#include <string>

// The plug-in of the commands that host it for a device.

namespace VeltoTouch::Velto {

// --plugin PATH. Unset, the target is empty.
void addPlugIn(App& app, std::string& target);

// Opens a service of the plug-in in this folder on the device; an empty path means the program's own plug-in. Throws
// std::runtime_error under the plug-in's name.
[[nodiscard]] HostedService openService(const std::string& plugIn, const Surface::ConnectedDevice& device,
                                        const HostedService::GestureHandler& gestureHandler);

} // namespace VeltoTouch::Velto
