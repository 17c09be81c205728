#pragma once

#include "Platform/Backend/HIDDeviceBackend.h"

#include <cstdint>
#include <vector>

namespace VeltoTouch::Surface {

struct FeatureReading {
    std::uint8_t id;
    std::vector<std::uint8_t> bytes; // ID first; empty if the device does not give it
};

// Reads every feature report that the surface declares from an open device. Blocks as long as the device takes.
[[nodiscard]] std::vector<FeatureReading> readFeatureReports(HIDDeviceBackend& device);

} // namespace VeltoTouch::Surface
