#pragma once

#include "Platform/Linux/ReportDescriptor.h"

#include <functional>
#include <string>
#include <vector>

// The hidraw nodes of this machine, read from sysfs: no node is opened, and no right to open one is needed.

namespace VeltoTouch {

// A node and the device behind it.
struct HidrawNode {
    std::string path;         // /dev/hidrawN; reused after the device is removed
    std::string folder;       // below /sys; never reused, not even by the same device plugged in again
    std::string product;      // as the kernel names it, often maker and product
    std::string serialNumber; // empty if the device has none
    std::string bus;          // "USB", "Bluetooth", ...; empty for a bus without a name
};

// Returns whether a device matches.
using HidrawMatch = std::function<bool(const ReportDescriptor& descriptor)>;

// Returns the nodes of all devices that match, by number. If a udevd runs, a device is listed once its rules have run:
// before, its node may not have its owner and rights yet.
[[nodiscard]] std::vector<HidrawNode> findHidrawNodes(const HidrawMatch& match);

// Returns whether a udevd runs on this machine; containers, for example, have none.
[[nodiscard]] bool udevdIsRunning() noexcept;

} // namespace VeltoTouch
