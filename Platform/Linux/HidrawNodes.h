#pragma once

#include "Platform/Linux/ReportDescriptor.h"

#include <functional>
#include <string>
#include <vector>

// The hidraw nodes of this machine, as sysfs shows them to everybody: no node is opened, and no right to open one is
// needed.

namespace VeltoTouch {

// A node and the device behind it.
struct HidrawNode {
    std::string path;         // /dev/hidrawN; free for another device once this one has gone
    std::string folder;       // below /sys; never another device's, nor that of the same one plugged in again
    std::string product;      // as the kernel names it, which is often maker and product
    std::string serialNumber; // empty where the device has none
    std::string bus;          // "USB", "Bluetooth", ...; empty for a bus without a name
};

// Whether a device is wanted.
using HidrawMatch = std::function<bool(const ReportDescriptor& descriptor)>;

// The nodes of all devices that are wanted, by number. Where a udevd runs, a device is there once its rules have run:
// before, its node may not have its owner and rights yet.
[[nodiscard]] std::vector<HidrawNode> findHidrawNodes(const HidrawMatch& match);

// Whether a udevd looks after the devices of this machine; there is none in containers, for example.
[[nodiscard]] bool udevdIsRunning() noexcept;

} // namespace VeltoTouch
