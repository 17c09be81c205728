#pragma once

#include "Platform/PlugIn.h"

// The one symbol that the module exports. Returns the plug-in interface handle of a new touch service, which the host
// owns with the only reference to the object; null for a type that is no HID service. Any thread.
extern "C" void* VeltoTouchHIDServiceFactory(VeltoTouch::CFTypeRef allocator, VeltoTouch::CFUUIDRef type) noexcept;
