#pragma once

#include "Platform/Value.h"

#include <cstdint>

namespace VeltoTouch {

// Reads what the kernel knows of a HID device, under the platform's keys:
//
//   VendorID, ProductID              numbers
//   Transport                        "USB", "Bluetooth", ...; absent for a bus without a name
//   Product                          as the kernel names it, often maker and product
//   SerialNumber, PhysicalLocation   absent if the device or the kernel has none
//   ReportDescriptor                 data
//   PrimaryUsagePage, PrimaryUsage   absent if the report descriptor has no usage
//   MaxInputReportSize               bytes, the report ID included
//
// `node` is an open descriptor of a hidraw node. Throws std::system_error for any other and if the device is removed.
[[nodiscard]] Ref<Dictionary> readHidrawProperties(int node);

// Returns "USB", "Bluetooth", ... for one of the kernel's bus numbers; empty for any other.
[[nodiscard]] const char* nameOfBus(std::uint32_t bus) noexcept;

} // namespace VeltoTouch
