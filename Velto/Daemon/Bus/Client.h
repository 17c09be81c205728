#pragma once

#include "Platform/Value.h"
#include "Velto/Daemon/Bus/Names.h"
#include "Velto/Daemon/EventLoop.h"
#include "Velto/Host/Gesture.h"

#include <cstdint>
#include <functional>
#include <string>

namespace VeltoTouch::Bus {

// A surface that some program serves, seen from the other side of the bus. On one thread.
//
// Each call throws std::runtime_error in words for people; what the other side refuses, in its words.
class Client {
public:
    // `device`: as it is served; empty for the only one.
    Client(Which which, const std::string& device);

    // Never nil: what there is not is refused.
    [[nodiscard]] Ref<Value> getProperty(const std::string& key);
    void setProperty(const std::string& key, const Value& value);

    // From here on, while the loop runs: each gesture, and the end of the surface's service. What a handler throws, and
    // that the bus has gone, ends the run. Once; this must be there until the run has ended.
    void watch(EventLoop& loop, std::function<void(const Gesture& gesture)> gestureHandler,
               std::function<void()> endHandler);

private:
    struct Signals;

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
