#pragma once

#include "Platform/PlugIn.h"

// The functions in a service's tables: each turns a call with an interface handle into one of the service object's
// operations. Stateless; any thread. An exception that reaches them ends the process.

namespace VeltoTouch::VeltoIUnknown {

HRESULT QueryInterface(void* self, REFIID interfaceID, void** handle) noexcept;
ULONG AddRef(void* self) noexcept;
ULONG Release(void* self) noexcept;

IOReturn Probe(void* self, CFDictionaryRef propertyTable, io_service_t service, std::int32_t* order) noexcept;
IOReturn Start(void* self, CFDictionaryRef propertyTable, io_service_t service) noexcept;
IOReturn Stop(void* self) noexcept;

bool open(void* self, IOOptionBits options) noexcept;
void close(void* self, IOOptionBits options) noexcept;
CFPropertyListRef copyProperty(void* self, CFStringRef key) noexcept;
bool setProperty(void* self, CFStringRef key, CFPropertyListRef value) noexcept;
void setEventCallback(void* self, IOHIDServiceEventCallback callback, void* target, void* refcon) noexcept;
void scheduleWithDispatchQueue(void* self, dispatch_queue_t queue) noexcept;
void unscheduleFromDispatchQueue(void* self, dispatch_queue_t queue) noexcept;
IOHIDEventRef copyEvent(void* self, std::uint32_t eventType, IOHIDEventRef matching, IOOptionBits options) noexcept;
IOReturn setOutputEvent(void* self, IOHIDEventRef event) noexcept;

// Returns a handle in the untyped form in which a host holds it.
template <class Table>
[[nodiscard]] void* handleOf(Table* const* interface) noexcept {
    return const_cast<Table**>(interface);
}

} // namespace VeltoTouch::VeltoIUnknown
