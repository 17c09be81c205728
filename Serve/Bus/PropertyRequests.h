#pragma once

#include "Platform/Dispatch.h"
#include "Platform/Value.h"
#include "Serve/Bus/Values.h"
#include "Serve/EventLoop.h"

#include <atomic>
#include <cstddef>
#include <deque>
#include <functional>
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
// take seconds for a feature report, and the loop has signals and a watchdog to see to. The next is begun when the one
// before is answered, so that there is one value in memory at a time, which may be a whole recording.
//
// On the loop's thread.
class PropertyRequests {
public:
    // The value that was read (nil after a write), or what is wrong.
    using Outcome = std::variant<Ref<Value>, CallError>;
    using Answer = std::function<void(const Outcome& outcome)>;

    static constexpr std::size_t kMostOfOneCaller = 4;
    static constexpr std::size_t kMostWaiting = 256;
    static constexpr std::size_t kMostWaitingToWrite = 272; // all: who only reads leaves room for those who write
    static constexpr std::size_t kLongestKey = 256;         // bytes
    static constexpr std::size_t kLargestValue = 65'536;    // bytes

    // `loop` outlives this.
    PropertyRequests(EventLoop& loop, ServiceProperties properties);
    PropertyRequests(const PropertyRequests&) = delete;
    PropertyRequests& operator=(const PropertyRequests&) = delete;
    // Waits for the request that is being done, which takes as long as the device does. Those that have no answer yet
    // get none.
    ~PropertyRequests();

    // Both answer later, on the loop's thread. `caller`: whoever asks, by any name that is one caller's alone. They
    // throw CallError for what is refused at once:
    //
    //   LimitsExceeded     too many requests are waiting
    //   InvalidArgs        the key is too long; a setting that is a number is given something else
    //   UnknownProperty    (to set) a key of the pipeline that nothing knows: each would stay in the recording for good
    //
    // and answer UnknownProperty where there is no value, PropertyReadOnly where the device does not take one. A
    // setting that does not read its value is written with null: the recording keeps what is written.
    void get(const std::string& caller, const std::string& key, Answer answer);
    void set(const std::string& caller, const std::string& key, Ref<Value> value, Answer answer);

private:
    struct Request {
        std::string caller;
        std::function<Outcome()> work; // on the thread of the requests
        Answer answer;
    };

    void queue(std::size_t mostWaiting, Request request);
    void begin();
    void end(const Outcome& outcome);

    EventLoop& _loop;
    const ServiceProperties _properties;
    const Ref<DispatchQueue> _queue = dispatch_queue_create("velto requests");
    std::atomic<bool> _isEnding{false};
    std::deque<Request> _waiting; // the first one is being done
};

} // namespace VeltoTouch::Bus
