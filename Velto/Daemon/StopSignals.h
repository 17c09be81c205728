#pragma once

#include "Velto/Daemon/EventLoop.h"
#include "Velto/Daemon/SignalDescriptor.h"

#include <chrono>
#include <functional>
#include <optional>

namespace VeltoTouch {

// Stops a loop on SIGINT and SIGTERM, which wait for it from the construction on.
//
// On the main thread. Other threads must block the signals, as those of NSThread do.
class StopSignals {
public:
    // `loop` outlives this. Throws std::system_error.
    explicit StopSignals(EventLoop& loop);
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;
    ~StopSignals() = default;

    // Runs the loop, at most `longest`. However that ends, `close` is called then, and from there on the second signal
    // in all ends the program immediately, in case its end is stuck. Called once. Throws what the loop throws.
    void run(
        std::optional<std::chrono::microseconds> longest = {}, const std::function<void()>& close = [] {});

private:
    void beginEnd() noexcept;

    EventLoop& _loop;
    const SignalDescriptor _signals;
};

} // namespace VeltoTouch
