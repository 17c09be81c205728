#pragma once

#include "Platform/HIDEventSystem.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace VeltoTouch {

// Delivers the platform's accelerometer events to a callback, on a run loop and in a mode of its owner's choice, from
// construction to `cleanup`. No lock: made, used and destroyed on the thread of that run loop.
class AccelSystem {
public:
    using Callback = std::function<void(HIDEvent* event)>;

    // Finds the first accelerometer, asks it for `frequency` events a second and listens. The callback gets events of
    // the accelerometer type alone, from whichever accelerometer they come.
    //
    // Throws std::invalid_argument("nil argument") if one is null or empty, std::runtime_error if the event system has
    // no client or no accelerometer for us, and what the platform throws. Whatever it throws, nothing stays registered.
    AccelSystem(CFRunLoopRef runLoopToUse, CFStringRef mode, std::uint32_t frequency, const Callback& callback);
    AccelSystem(const AccelSystem&) = delete;
    AccelSystem& operator=(const AccelSystem&) = delete;
    ~AccelSystem();

    // Ends the delivery for good. Idempotent.
    void cleanup();

    // Borrowed from `retainedObjects`.
    IOHIDEventSystemClientRef eventSystemClient = nullptr;
    IOHIDServiceClientRef serviceClient = nullptr; // the one that got the report interval
    CFRunLoopRef runLoop = nullptr;                // null after cleanup
    CFStringRef runLoopMode = nullptr;

    std::vector<Ref<const Object>> retainedObjects; // in the order of the members above; released last to first

private:
    void start(CFRunLoopRef runLoopToUse, CFStringRef mode, std::uint32_t frequency, const Callback& callback);
    void retain(CFTypeRef object) { retainedObjects.push_back(Ref<const Object>::retained(object)); }
    void releaseObjects() noexcept;
};

} // namespace VeltoTouch
