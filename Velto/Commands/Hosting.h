#pragma once

#include "Velto/Host/HostedService.h"
#include "Velto/Options/App.h"
#include "Velto/Options/Devices.h"

#include <string>

// Shared by the commands that host the plug-in for a device.

namespace VeltoTouch::Velto {

// --device DEVICE, and the devices at the end of the help.
CLI::Option* addDevice(App& app, DeviceChoice& target, const std::string& description);

// The same for what is served, which the standard input cannot be. Required.
CLI::Option* addDeviceToServe(App& app, DeviceChoice& target);

// DEVICE|FILE, and the devices at the end of the help.
CLI::Option* addWatched(App& app, Watched& target, const std::string& description);

// DEVICE, an argument, and the devices at the end of the help.
CLI::Option* addDeviceArgument(App& app, DeviceChoice& target);

// Throws std::runtime_error under the output's name if it is the very recording that the device plays: what is written
// as it comes would take the place of what has not been played yet.
void requireOtherFile(const DeviceChoice& device, const std::string& output);

// --plugin PATH. Unset, the target is empty.
void addPlugIn(App& app, std::string& target);

// Opens a service of the plug-in in this folder on the device; an empty path means the program's own plug-in. Throws
// std::runtime_error under the plug-in's name.
[[nodiscard]] HostedService openService(const std::string& plugIn, const Surface::ConnectedDevice& device,
                                        const HostedService::GestureHandler& gestureHandler);

} // namespace VeltoTouch::Velto
