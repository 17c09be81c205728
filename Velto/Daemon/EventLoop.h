#pragma once

#include "Platform/FileDescriptor.h"
#include "Platform/Mutex.h"
#include "Velto/Daemon/Bus/Handles.h"

#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace VeltoTouch {

// The loop of a program that runs until it is stopped: descriptors, timers, blocks from other threads, and the bus. If
// the system's service manager has set a watchdog for the program, the loop feeds it.
//
// Constructed, used, run once and destroyed on one thread, except where noted. Handlers and blocks are called only by
// `run`. System errors are thrown as std::system_error.
class EventLoop {
public:
    using Handler = std::function<void()>;

    EventLoop();
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;
    ~EventLoop();

    // Calls the handler whenever there is something to read. The caller keeps the descriptor.
    void addDescriptor(int descriptor, Handler handler);
    // Calls the handler again and again, at least `interval` after the previous call; up to a quarter of a second later
    // than that, so that wake-ups fall together.
    void addTimer(std::chrono::microseconds interval, Handler handler);
    // The same without that delay, for what people watch.
    void addExactTimer(std::chrono::microseconds interval, Handler handler);

    // Runs a block on the loop's thread after those posted before. Does not wait. Blocks that have not run when the
    // loop is destroyed are dropped. Any thread.
    void post(Handler block);

    // Runs until `stop`, at most `longest`. Throws what a handler or block throws.
    void run(std::optional<std::chrono::microseconds> longest = {});
    // Ends the run, or the next one, after the blocks posted before. Any thread.
    void stop();

    [[nodiscard]] sd_event* handle() const noexcept { return _loop.get(); }

private:
    struct Source;

    static int call(Source& source) noexcept;
    void addTimer(std::chrono::microseconds interval, std::uint64_t accuracyUs, Handler handler);
    void runPosted();

    const EventLoopHandle _loop;
    const FileDescriptor _posts; // an eventfd
    Mutex _lock;
    std::vector<Handler> _posted VELTO_GUARDED_BY(_lock);
    std::vector<std::unique_ptr<Source>> _sources;
    std::exception_ptr _failure;
};

} // namespace VeltoTouch
