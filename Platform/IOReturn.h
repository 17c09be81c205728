#pragma once

#include <cstdint>

// Status codes and option words of the platform's calls.

namespace VeltoTouch {

using IOReturn = std::int32_t;
using IOOptionBits = std::uint32_t;

// The platform's handle of a service, such as a HID device; 0 is none.
using io_service_t = std::uint32_t;

constexpr IOReturn statusCode(std::uint32_t code) noexcept { return static_cast<IOReturn>(code); }

constexpr IOReturn kIOReturnSuccess = 0;
constexpr IOReturn kIOReturnError = statusCode(0xE00002BC);
constexpr IOReturn kIOReturnNoResources = statusCode(0xE00002BE);
constexpr IOReturn kIOReturnNoDevice = statusCode(0xE00002C0);
constexpr IOReturn kIOReturnUnsupported = statusCode(0xE00002C7);
constexpr IOReturn kIOReturnNotOpen = statusCode(0xE00002CD);
constexpr IOReturn kIOReturnBusy = statusCode(0xE00002D5);
constexpr IOReturn kIOReturnNotPermitted = statusCode(0xE00002E2);

} // namespace VeltoTouch
