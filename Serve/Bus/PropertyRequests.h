#pragma once

#include "Platform/Dispatch.h"
#include "Platform/Value.h"
#include "Serve/Bus/Values.h"
#include "Serve/EventLoop.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <variant>

namespace VeltoTouch::Bus {

// The properties of a service, from any thread.
struct ServiceProperties {
    std::function<Ref<Value>(const std::string& key)> get;                    // nil where there is none
    std::function<bool(const std::string& key, const Ref<Value>& value)> set; // whether the value was taken
};

// Reads and writes properties for whoever calls from the bus, whom nothing is believed: keys and values are looked at,
// and so many requests wait at most. They are done one after the other on a thread of their own, since a device may
// take seconds for a feature report, and the loop has keys and signals to see to.
//
// On the loop's thread.
class PropertyRequests {
public:
    // The value that was read (nil after a write), or what is wrong.
    using Outcome = std::variant<Ref<Value>, CallError>;
    using Answer = std::function<void(const Outcome& outcome)>;

    static constexpr std::size_t kMostWaiting = 256;
    static constexpr std::size_t kLongestKey = 256;      // bytes
    static constexpr std::size_t kLargestValue = 65'536; // bytes; settings are kept for long

    // `loop` outlives this.
    PropertyRequests(EventLoop& loop, ServiceProperties properties);
    PropertyRequests(const PropertyRequests&) = delete;
    PropertyRequests& operator=(const PropertyRequests&) = delete;
    // Waits for the request that is being done. Those that have no answer yet get none.
    ~PropertyRequests();

    // Both answer later, on the loop's thread. Throw CallError for what is refused at once:
    //
    //   LimitsExceeded     too many requests are waiting
    //   InvalidArgs        the key is too long; a setting that is a number is given something else
    //   UnknownProperty    (to set) a key of the pipeline that nothing knows: each would stay in the recording for good
    //
    // and answer UnknownProperty where there is no value, PropertyReadOnly where the device does not take one.
    void get(const std::string& key, Answer answer);
    void set(const std::string& key, Ref<Value> value, Answer answer);

private:
    void queue(Answer answer, std::function<Outcome()> work);
    void deliver(std::uint64_t number, const Outcome& outcome);

    EventLoop& _loop;
    const ServiceProperties _properties;
    const Ref<DispatchQueue> _queue = dispatch_queue_create("velto requests");
    std::atomic<bool> _isEnding{false};
    std::uint64_t _lastNumber = 0;
    std::map<std::uint64_t, Answer> _waiting; // the worker knows the numbers alone
};

} // namespace VeltoTouch::Bus
