#pragma once

#include "Velto/Daemon/EventLoop.h"
#include "Velto/Daemon/SignalDescriptor.h"

namespace VeltoTouch {

// Calls a handler on SIGHUP. If the signal means that the terminal has gone (the kernel sent it, or the shell passed it
// on), the loop stops instead, unless the program was started to ignore the signal (nohup): then it goes on.
// Constructed before the program has other threads, which inherit the blocked signal.
class ReloadSignal {
public:
    // `loop` must not run after this is destroyed. Throws std::system_error.
    ReloadSignal(EventLoop& loop, EventLoop::Handler handler);
    ReloadSignal(const ReloadSignal&) = delete;
    ReloadSignal& operator=(const ReloadSignal&) = delete;
    ~ReloadSignal() = default;

private:
    void read();

    EventLoop& _loop;
    const EventLoop::Handler _handler;
    const bool _outlivesTerminal;
    const bool _hadTerminal;
    const SignalDescriptor _signal;
};

} // namespace VeltoTouch
