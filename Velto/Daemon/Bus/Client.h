#pragma once

#include "Platform/Value.h"
#include "Velto/Daemon/Bus/Names.h"
#include "Velto/Daemon/EventLoop.h"
#include "Velto/Host/Gesture.h"

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <sys/types.h>

namespace VeltoTouch::Bus {

// Returns the names on the bus of the surfaces that are served now ("hidraw0", "sim"), sorted. Throws
// std::runtime_error if there is no bus.
[[nodiscard]] std::vector<std::string> servedOn(Which which);

// A service did not answer in time. With a message for people.
class NoAnswer : public std::runtime_error {
public:
    explicit NoAnswer(Which which);
};

// A call has come to an error: of the service, of the bus, or of the connection. With its words.
class Refused : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};
// The caller has no right to what was asked for. With a message for people.
class NotAllowed : public Refused {
public:
    NotAllowed();
};

// A client of a program that serves a surface. One thread.
//
// Each call throws std::runtime_error with a message for people: Refused, NoAnswer, or another. A call may take long,
// as a device may: whether there is somebody to wait for is asked first
// (`requireAnswer`).
class Client {
public:
    // `device` is the served name; empty for the only one. Requires an answer.
    Client(Which which, const std::string& device);

    // A client of a surface that need not be served yet: calls are refused until it is.
    struct MayBeUnserved {};
    Client(Which which, const std::string& device, MayBeUnserved);
    [[nodiscard]] bool isServed() const;
    // Throws NoAnswer if the service's loop has not answered within ten seconds.
    void requireAnswer();

    // Never returns nil: a property that is absent is refused.
    [[nodiscard]] Ref<Value> getProperty(const std::string& key);
    void setProperty(const std::string& key, const Value& value);

    // Reads a property of the object on the bus, such as Counters.
    [[nodiscard]] Ref<Value> getObjectProperty(const char* name);
    // Returns the folder of the configuration that the service reads.
    [[nodiscard]] std::string configuration();
    // Returns the user whom the service runs as.
    [[nodiscard]] uid_t user();
    // Returns a dictionary: the keys of gestures by what they are for, such as keys.tap.play-pause.
    [[nodiscard]] Ref<Value> keys();
    // Returns a dictionary: where the settings and keys come from that are not at their defaults.
    [[nodiscard]] Ref<Value> sources();
    // Makes the service read its configuration anew.
    void reload();

    // Reports each gesture, and the end of the surface's service, while the loop runs. An exception of a handler and
    // the loss of the bus end the run. This outlives the run. Either this or `followProperties` is called, once.
    void watch(EventLoop& loop, std::function<void(const Gesture& gesture)> gestureHandler,
               std::function<void()> endHandler);

    using PropertyHandler = std::function<void(const std::string& key, const Ref<Value>& value)>;
    // The same for each write of a public property: what is read from here on is no older than the writes reported.
    // `beginHandler` is called for each service that begins meanwhile, `lossHandler` in place of the end of the run
    // when the bus is lost.
    void followProperties(EventLoop& loop, PropertyHandler propertyHandler, std::function<void()> endHandler,
                          std::function<void()> beginHandler, std::function<void()> lossHandler);
    // Throws what the loss of the bus is for people.
    [[noreturn]] static void failOfLoss();

    // Returns the surface's part of the bus name, such as hidraw0.
    [[nodiscard]] const std::string& element() const noexcept { return _element; }

private:
    struct Signals;

    [[nodiscard]] BusMessage callOf(const char* interface, const char* method);
    [[nodiscard]] BusMessage callFor(const char* method, const std::string& key);
    [[nodiscard]] BusMessage send(const BusMessage& call, std::uint64_t timeout = kDefaultTimeout);
    void match(const std::string& rule, int (*handler)(sd_bus_message*, void*, sd_bus_error*));
    void follow(EventLoop& loop, const char* signal, int (*handler)(sd_bus_message*, void*, sd_bus_error*),
                std::function<void()> endHandler);

    const Which _which;
    const BusHandle _bus;
    const std::string _element;
    EventLoop* _watcher = nullptr;
    std::function<void(const Gesture&)> _gestureHandler;
    PropertyHandler _propertyHandler;
    std::function<void()> _endHandler;
    std::function<void()> _beginHandler = [] {};
    std::function<void()> _lossHandler = failOfLoss;
};

} // namespace VeltoTouch::Bus
