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

// The loop of a program that goes on until it is stopped: descriptors, timers, blocks from other threads, and the bus.
// Where the system's manager keeps a watchdog on the program, the loop feeds it as long as it goes round.
//
// Made, used, run once and destroyed on one thread, but for what says otherwise. Handlers and blocks are only called by
// the run. Errors of the system are std::system_error.
class EventLoop {
public:
    using Handler = std::function<void()>;

    EventLoop();
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;
    ~EventLoop();

    // Calls the handler each time when there is something to read; the descriptor stays its owner's.
    void addDescriptor(int descriptor, Handler handler);
    // Calls the handler at least so long after the call before.
    void addTimer(std::chrono::microseconds interval, Handler handler);

    // Runs a block on the loop's thread, after those that were posted before. Any thread; never waits. Blocks that have
    // not run when the loop goes never do.
    void post(Handler block);

    // Until `stop`, at most so long. Throws what a handler or block throws.
    void run(std::optional<std::chrono::microseconds> longest = {});
    // Ends the run, also one to come, after what was posted before. Any thread.
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
