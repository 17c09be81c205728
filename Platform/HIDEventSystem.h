#pragma once

#include "Platform/HIDEvent.h"
#include "Platform/RunLoop.h"
#include "Platform/Value.h"

#include <functional>
#include <vector>

// The HID event system as a client sees it: a client finds event services, such as an accelerometer, by their
// properties and gets their events on a run loop.

namespace VeltoTouch {

// What accelerometers are found by.
constexpr std::uint32_t kAccelerometerUsagePage = 0xFF00;
constexpr std::uint32_t kAccelerometerUsage = 3;

// A service that a client has found.
class HIDServiceClient : public Object {};
using IOHIDServiceClientRef = HIDServiceClient*;

class HIDEventSystemClient : public Object {};
using IOHIDEventSystemClientRef = HIDEventSystemClient*;

using IOHIDEventBlock = std::function<void(void* target, void* refcon, IOHIDServiceClientRef sender, HIDEvent* event)>;

// Returns null if the event system refuses. The type and the properties are not interpreted. A client is used on one
// thread.
[[nodiscard]] Ref<HIDEventSystemClient> IOHIDEventSystemClientCreateWithType(CFTypeRef allocator, std::uint32_t type,
                                                                             CFDictionaryRef properties);
// Selects the services whose properties equal all entries of `matching`.
void IOHIDEventSystemClientSetMatching(IOHIDEventSystemClientRef client, CFDictionaryRef matching);
[[nodiscard]] std::vector<Ref<HIDServiceClient>> IOHIDEventSystemClientCopyServices(IOHIDEventSystemClientRef client);
// Sets the block for events, or removes it. Target and refcon are handed back to the block.
void IOHIDEventSystemClientRegisterEventBlock(IOHIDEventSystemClientRef client, IOHIDEventBlock block, void* target,
                                              void* refcon);
void IOHIDEventSystemClientUnregisterEventBlock(IOHIDEventSystemClientRef client, const IOHIDEventBlock& block,
                                                void* target, void* refcon);
// Delivers the events of all matching services on the loop while it runs in the mode, until it is unscheduled. On the
// thread of that loop. May throw std::system_error.
void IOHIDEventSystemClientScheduleWithRunLoop(IOHIDEventSystemClientRef client, CFRunLoopRef loop, CFStringRef mode);
void IOHIDEventSystemClientUnscheduleWithRunLoop(IOHIDEventSystemClientRef client, CFRunLoopRef loop, CFStringRef mode);

// Returns whether the service has taken the value.
bool IOHIDServiceClientSetProperty(IOHIDServiceClientRef service, CFStringRef key, CFPropertyListRef value);

} // namespace VeltoTouch
