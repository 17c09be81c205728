#pragma once

#include "Platform/Value.h"

#include <cstdint>

namespace VeltoTouch {

// What the kernel tells of a HID device, under the platform's keys:
//
//   VendorID, ProductID              numbers
//   Transport                        "USB", "Bluetooth", ...; left out for a bus without a name
//   Product                          as the kernel names it, which is often maker and product
//   SerialNumber, PhysicalLocation   left out where the device or the kernel has none
//   ReportDescriptor                 data
//   PrimaryUsagePage, PrimaryUsage   left out where the report descriptor has no usage
//   MaxInputReportSize               bytes, the report ID included
//
// `node` is an open descriptor of a hidraw node. Throws std::system_error for any other, and where the device has gone.
[[nodiscard]] Ref<Dictionary> readHidrawProperties(int node);

// "USB", "Bluetooth", ... of one of the kernel's numbers of buses; empty where it has no name here.
[[nodiscard]] const char* nameOfBus(std::uint32_t bus) noexcept;

} // namespace VeltoTouch
