#pragma once

#include "Platform/FileDescriptor.h"
#include "Velto/Daemon/EventLoop.h"

namespace VeltoTouch {

// SIGINT and SIGTERM stop a loop. Made before the program has other threads, which take over that the signals are
// blocked.
class StopSignals {
public:
    // `loop` is not run after this has gone. Throws std::system_error.
    explicit StopSignals(EventLoop& loop);
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;
    ~StopSignals() = default;

    // The program is ending: from here on, the second signal of all ends it at once, should it be stuck. The first
    // still has no other effect.
    void beginEnd() noexcept;

private:
    FileDescriptor _descriptor;
};

} // namespace VeltoTouch
