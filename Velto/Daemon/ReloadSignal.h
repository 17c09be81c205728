#pragma once

#include "Platform/FileDescriptor.h"
#include "Velto/Daemon/EventLoop.h"

namespace VeltoTouch {

// Calls a handler on SIGHUP. If the kernel sent it, because the terminal has gone, or the shell that hears of that
// first passed it on, the loop stops instead; a program that ignores the signal (nohup) goes on. Constructed before the
// program has other threads, which inherit the blocked signal.
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
    FileDescriptor _descriptor;
};

} // namespace VeltoTouch
