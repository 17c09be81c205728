#pragma once

#include "Platform/Dispatch.h"
#include "Platform/Value.h"
#include "Velto/Daemon/Bus/Values.h"
#include "Velto/Daemon/EventLoop.h"

#include <functional>
#include <string>
#include <variant>

namespace VeltoTouch::Bus {

// The properties of a service, from any thread.
struct ServiceProperties {
    std::function<Ref<Value>(const std::string& key)> get;                    // nil if there is none
    std::function<bool(const std::string& key, const Ref<Value>& value)> set; // whether the value was taken
};

// Reads and writes properties for untrusted bus clients, one at a time, on a thread of its own: a device may take
// seconds for a feature report, while the loop must handle signals and the watchdog. At most one value, which may be a
// whole recording, is in memory at a time.
//
// The loop's thread.
class PropertyRequests {
public:
    // The value that was read (nil after a write), or the error.
    using Outcome = std::variant<Ref<Value>, CallError>;
    using Answer = std::function<void(const Outcome& outcome)>;

    // `loop` outlives this, but must not run after this is destroyed.
    PropertyRequests(EventLoop& loop, ServiceProperties properties);
    PropertyRequests(const PropertyRequests&) = delete;
    PropertyRequests& operator=(const PropertyRequests&) = delete;
    // Waits for the request in progress, as long as the device takes. It gets no answer.
    ~PropertyRequests();

    // Returns whether a request is in progress. The next one must wait.
    [[nodiscard]] bool isBusy() const noexcept { return _answer != nullptr; }

    // Both answer later, on the loop's thread: UnknownProperty if there is no value, PropertyReadOnly if the device
    // does not take it, Failed if the service throws. `set` throws CallError for what is refused immediately:
    //
    //   InvalidArgs        a setting that is a number is given something else
    //   UnknownProperty    a key of the pipeline that nothing knows: each would stay in the recording for good
    //
    // A setting that does not read its value is written with null: the recording keeps what is written.
    void get(const std::string& key, Answer answer);
    void set(const std::string& key, Ref<Value> value, Answer answer);

private:
    void begin(std::function<Outcome()> work, Answer answer);

    EventLoop& _loop;
    const ServiceProperties _properties;
    const Ref<DispatchQueue> _queue = dispatch_queue_create("velto requests");
    Answer _answer; // to the request in progress
};

} // namespace VeltoTouch::Bus
