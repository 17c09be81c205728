#pragma once

#include "Plugin/Reports/FeatureReport.h"
#include "Plugin/Reports/InputReport.h"

#include <array>
#include <cstdint>

// The surface's HID report descriptor: what the controller says of itself and its reports when it is plugged in.

namespace VeltoTouch::Surface {

// Bytes of a feature report that only the firmware's makers read, without its ID.
constexpr std::uint8_t kFirmwareDebugReportSize = 127;

// All reports are rows of bytes to the system, which leaves it to us to find numbers in them. Sizes and counts are
// global: they stay until they are changed.
//
// clang-format off
constexpr auto kReportDescriptor = std::to_array<std::uint8_t>({
    0x06, 0x60, 0xFF,       // usage page 0xFF60, vendor-defined
    0x09, 0x01,             // usage 1: the surface
    0xA1, 0x01,             // collection (application)
    0x15, 0x00,             //   logical minimum 0
    0x26, 0xFF, 0x00,       //   logical maximum 255
    0x75, 0x08,             //   report size: 8 bits

    0x85, InputReport::Image::kReportID,
    0x95, sizeof(InputReport::Image),
    0x09, 0x01, 0x81, 0x02, //   input (data, variable, absolute)
    0x85, InputReport::FirmwareEvent::kReportID,
    0x95, sizeof(InputReport::FirmwareEvent),
    0x09, 0x02, 0x81, 0x02,

    0x85, FeatureReport::FactoryResetHoldDuration::kReportID,
    0x95, sizeof(FeatureReport::FactoryResetHoldDuration),
    0x09, 0x03, 0xB1, 0x02, //   feature (data, variable, absolute)

    0x95, kFirmwareDebugReportSize,
    0x85, 0x04, 0x09, 0x04, 0xB1, 0x02,
    0x85, 0x10, 0x09, 0x04, 0xB1, 0x02,
    0x85, 0x11, 0x09, 0x04, 0xB1, 0x02,
    0x85, 0x12, 0x09, 0x04, 0xB1, 0x02,
    0x85, 0x13, 0x09, 0x04, 0xB1, 0x02,
    0x85, 0x1D, 0x09, 0x04, 0xB1, 0x02,
    0x85, 0x32, 0x09, 0x04, 0xB1, 0x02,
    0x85, 0x3B, 0x09, 0x04, 0xB1, 0x02,
    0x85, 0x3C, 0x09, 0x04, 0xB1, 0x02,
    0x85, 0x3F, 0x09, 0x04, 0xB1, 0x02,
    0xC0,                   // end of the collection
});
// clang-format on

} // namespace VeltoTouch::Surface
