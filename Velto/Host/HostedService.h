#pragma once

#include "Platform/Dispatch.h"
#include "Platform/PlugIn.h"
#include "Velto/Host/Gesture.h"

#include <functional>
#include <string>

namespace VeltoTouch {

// One life of a HID service, through its plug-in's two tables of functions alone:
//
//   factory, QueryInterface, Probe, Start, open, setEventCallback      the constructor
//   scheduleWithDispatchQueue                                          schedule
//   unscheduleFromDispatchQueue, draining the queue                    unschedule
//   close, Stop, Release of both handles                               stop
//
// Constructed, scheduled and stopped on one thread. Properties: any thread, until it is stopped.
class HostedService {
public:
    // Called on the host's queue, one gesture after the other, in the order of their events; short, as the queue is an
    // interactive one; must not throw. An event that is no gesture is left out.
    using GestureHandler = std::function<void(const Gesture& gesture)>;

    // Makes a service for a device and opens it. Throws std::runtime_error with the step that failed; what was done
    // until then is undone.
    HostedService(CFPlugInFactoryFunction factory, io_service_t device, CFDictionaryRef properties,
                  GestureHandler gestureHandler);
    HostedService(const HostedService&) = delete;
    HostedService& operator=(const HostedService&) = delete;
    ~HostedService() { stop(); }

    // Returns nil if the service has no such property.
    [[nodiscard]] Ref<Value> copyProperty(const std::string& key) const;
    // Returns whether the value was taken.
    [[nodiscard]] bool setProperty(const std::string& key, const Ref<Value>& value) const;

    // Starts the events. Called once.
    void schedule();
    // Stops the events: those under way are delivered before this returns, none after. Properties can still be read.
    void unschedule() noexcept;
    // Undoes what was begun, in the order above. Idempotent.
    void stop() noexcept;

private:
    enum class State { NotStarted, Started, Opened, Scheduled };

    void make(CFPlugInFactoryFunction factory);
    void start(io_service_t device, CFDictionaryRef properties);
    void open();
    static void deliver(void* target, void* refcon, void* sender, IOHIDEventRef event, IOOptionBits options);

    const GestureHandler _gestureHandler;
    const Ref<DispatchQueue> _queue = dispatch_queue_create("velto events", QOS_CLASS_USER_INTERACTIVE);
    IOCFPlugInInterfaceStruct** _plugIn = nullptr;
    IOHIDServiceInterface2** _service = nullptr;
    State _state = State::NotStarted;
};

} // namespace VeltoTouch
