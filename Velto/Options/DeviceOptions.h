#pragma once

#include "Velto/Options/App.h"
#include "Velto/Options/Devices.h"

#include <initializer_list>
#include <string>

// The device of a command, as argument and option.

namespace VeltoTouch::Velto {

// --device DEVICE, and the devices at the end of the help.
CLI::Option* addDevice(App& app, DeviceChoice& target, const std::string& description);

// The same for what is served, without the devices that cannot be. Required.
CLI::Option* addDeviceToServe(App& app, DeviceChoice& target);

// DEVICE|FILE, and the devices at the end of the help.
CLI::Option* addWatched(App& app, Watched& target, const std::string& description);

// DEVICE, an argument, and the devices at the end of the help.
CLI::Option* addDeviceArgument(App& app, DeviceChoice& target);

// Refuses, as wrong usage, options that are for a device only: called where a recording is given.
void refuseBesideRecording(std::initializer_list<const CLI::Option*> options);

// Throws std::runtime_error under the output's name if it is the very recording that the device plays: what is written
// as it comes would take the place of what has not been played yet.
void requireOtherFile(const DeviceChoice& device, const std::string& output);

} // namespace VeltoTouch::Velto
