#pragma once

#include "Velto/Daemon/EventLoop.h"
#include "Velto/Daemon/SignalDescriptor.h"

namespace VeltoTouch {

// Stops a loop on SIGINT and SIGTERM. Constructed before the program has other threads, which inherit the blocked
// signals.
class StopSignals {
public:
    // `loop` must not run after this is destroyed. Throws std::system_error.
    explicit StopSignals(EventLoop& loop);
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;
    ~StopSignals() = default;

    // Called when the program is ending: from here on the second signal in all ends it immediately, in case it is
    // stuck.
    void beginEnd() noexcept;

private:
    const SignalDescriptor _signals;
};

} // namespace VeltoTouch
