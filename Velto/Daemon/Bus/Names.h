#pragma once

#include <string>
#include <string_view>

// Names on the message bus:
//
//   org.velto.Touch1             a program that serves a surface; several stand in line for it
//   org.velto.Touch1.hidraw0     the program that serves this device
//   /org/velto/Touch1            the object manager
//   /org/velto/Touch1/hidraw0    the device's object, with the interface org.velto.Touch1

namespace VeltoTouch::Bus {

constexpr const char* kName = "org.velto.Touch1";
constexpr const char* kInterface = "org.velto.Touch1";
constexpr const char* kObjects = "/org/velto/Touch1";

// The members of the interface that both ends name. The others stand in the object's table.
constexpr const char* kGetProperty = "GetProperty";
constexpr const char* kGetPublicProperty = "GetPublicProperty";
constexpr const char* kSetProperty = "SetProperty";
constexpr const char* kGetSources = "GetSources";
constexpr const char* kReload = "Reload";
constexpr const char* kPropertyChanged = "PropertyChanged";
constexpr const char* kGesture = "Gesture";
constexpr const char* kGestureTypes = "ssuut"; // gesture, region, phase, frame, timeNs

// Which bus: the system's, or that of the user's session.
enum class Which { System, Session };

// Returns a device's part of its bus name, from its name on the command line: the node's name for a path below /dev,
// else the kind before the colon ("sim", "replay"). Only letters and digits are kept, as bus names and paths want it.
[[nodiscard]] std::string elementOf(std::string_view device);

// Return the bus name and the object's path of a device.
[[nodiscard]] std::string nameOf(std::string_view element);
[[nodiscard]] std::string pathOf(std::string_view element);

} // namespace VeltoTouch::Bus
