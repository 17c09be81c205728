#pragma once

#include "Platform/HIDEvent.h"
#include "Platform/RunLoop.h"
#include "Platform/Value.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

// The HID event system as a client sees it. Event services, such as an accelerometer, are registered with it; a client
// finds some of them by their properties and gets their events on a run loop.

namespace VeltoTouch {

// A source of events. Events come on the run loop's thread; properties are used from any thread.
class HIDEventService : public Object {
public:
    using EventHandler = std::function<void(const Ref<HIDEvent>& event)>;

    // The value under a key, or nil. Clients match "PrimaryUsagePage" and "PrimaryUsage".
    [[nodiscard]] virtual Ref<Value> getProperty(const std::string& key) = 0;
    // Whether the service has taken the value. "ReportInterval": a double, microseconds between two events.
    virtual bool setProperty(const std::string& key, const Ref<Value>& value) = 0;

    // Adds a source to a mode of the calling thread's run loop that gives events to `handler`. Several may be open at
    // once. A service that goes takes its sources out of their modes. May throw std::system_error.
    [[nodiscard]] virtual RunLoopSource startEvents(RunLoop& loop, std::string_view mode, EventHandler handler) = 0;
};

// What accelerometers are found by.
constexpr std::uint32_t kAccelerometerUsagePage = 0xFF00;
constexpr std::uint32_t kAccelerometerUsage = 3;

// The interval that a property asks of a service of ours: a number above 0 under "ReportInterval", in microseconds,
// brought into this range. Nothing for any other key or value, which a service does not take.
constexpr double kShortestReportIntervalUs = 1'000;
constexpr double kLongestReportIntervalUs = 10'000'000;
[[nodiscard]] std::optional<double> reportIntervalUs(const std::string& key, const Ref<Value>& value) noexcept;

// Services are found in the order in which they were registered. Any thread.
void registerEventService(Ref<HIDEventService> service);
void unregisterEventService(const Ref<HIDEventService>& service);
// Whether clients can be made at all (they can, unless a test says otherwise).
void allowEventSystemClients(bool allowed);

class HIDEventSystemClient : public Object {};
using IOHIDEventSystemClientRef = HIDEventSystemClient*;

using IOHIDServiceClientRef = HIDEventService*;

using IOHIDEventBlock = std::function<void(void* target, void* refcon, IOHIDServiceClientRef sender, HIDEvent* event)>;

// Null where the event system refuses. The type and the properties are not interpreted. A client is used on one thread.
[[nodiscard]] Ref<HIDEventSystemClient> IOHIDEventSystemClientCreateWithType(CFTypeRef allocator, std::uint32_t type,
                                                                             CFDictionaryRef properties);
// The services whose properties equal all entries of `matching`.
void IOHIDEventSystemClientSetMatching(IOHIDEventSystemClientRef client, CFDictionaryRef matching);
[[nodiscard]] std::vector<Ref<HIDEventService>> IOHIDEventSystemClientCopyServices(IOHIDEventSystemClientRef client);
// An empty block where none is registered. Target and refcon are handed back to the block.
void IOHIDEventSystemClientRegisterEventBlock(IOHIDEventSystemClientRef client, IOHIDEventBlock block, void* target,
                                              void* refcon);
void IOHIDEventSystemClientUnregisterEventBlock(IOHIDEventSystemClientRef client, const IOHIDEventBlock& block,
                                                void* target, void* refcon);
// Events of all matching services come on the loop while it runs in the mode. On the thread of that loop. May throw
// std::system_error.
void IOHIDEventSystemClientScheduleWithRunLoop(IOHIDEventSystemClientRef client, CFRunLoopRef loop, CFStringRef mode);
void IOHIDEventSystemClientUnscheduleWithRunLoop(IOHIDEventSystemClientRef client, CFRunLoopRef loop, CFStringRef mode);

bool IOHIDServiceClientSetProperty(IOHIDServiceClientRef service, CFStringRef key, CFPropertyListRef value);

} // namespace VeltoTouch
