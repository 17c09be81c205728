#pragma once

#include "Platform/Value.h"
#include "Velto/Daemon/Bus/Names.h"
#include "Velto/Daemon/EventLoop.h"
#include "Velto/Host/Gesture.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace VeltoTouch::Bus {

// The names of the surfaces that are served now. Throws as the client's calls do.
[[nodiscard]] std::vector<std::string> servedOn(Which which);

// A client of a program that serves a surface. One thread.
//
// Each call throws std::runtime_error with a message for people; a refusal has the service's own words.
class Client {
public:
    // `device` is the served name; empty for the only one.
    Client(Which which, const std::string& device);

    // Never returns nil: a property that is absent is refused.
    [[nodiscard]] Ref<Value> getProperty(const std::string& key);
    // Reads a property of the object on the bus, such as Counters.
    [[nodiscard]] Ref<Value> getObjectProperty(const char* name);
    void setProperty(const std::string& key, const Value& value);

    // Reports each gesture, and the end of the surface's service, while the loop runs. An exception of a handler and
    // the loss of the bus end the run. Called once; this outlives the run.
    void watch(EventLoop& loop, std::function<void(const Gesture& gesture)> gestureHandler,
               std::function<void()> endHandler);

private:
    struct Signals;

    [[nodiscard]] BusMessage callFor(const char* method);
    [[nodiscard]] BusMessage callFor(const char* method, const std::string& key);
    [[nodiscard]] BusMessage send(const BusMessage& call);
    void match(const std::string& rule, int (*handler)(sd_bus_message*, void*, sd_bus_error*));

    const BusHandle _bus;
    const std::string _element;
    EventLoop* _watcher = nullptr;
    std::function<void(const Gesture&)> _gestureHandler;
    std::function<void()> _endHandler;
};

} // namespace VeltoTouch::Bus
