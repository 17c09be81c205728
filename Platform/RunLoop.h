#pragma once

#include "Platform/Mutex.h"
#include "Platform/Value.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A thread's event loop. It has named modes; a run handles the sources (descriptors and timers) of one mode and the
// blocks queued for it. The loop object may outlive its thread: what other threads call then does nothing.

namespace VeltoTouch {

class RunLoop;
using CFRunLoopRef = RunLoop*;

enum CFRunLoopRunResult : std::int32_t {
    kCFRunLoopRunFinished = 1,      // the mode has no sources
    kCFRunLoopRunStopped = 2,       // CFRunLoopStop
    kCFRunLoopRunTimedOut = 3,      //
    kCFRunLoopRunHandledSource = 4, // one source was handled; running a block handles none
};

// A source in a mode, taken out when this goes. Made, moved and destroyed on the loop's own thread, or after that
// thread has ended. Keeps the loop.
class RunLoopSource {
public:
    RunLoopSource() noexcept = default;
    RunLoopSource(RunLoopSource&& other) noexcept;
    RunLoopSource& operator=(RunLoopSource&& other) noexcept;
    ~RunLoopSource();

private:
    friend class RunLoop;
    RunLoopSource(RunLoop& loop, std::uint64_t identifier) noexcept;

    Ref<RunLoop> _loop;
    std::uint64_t _identifier = 0;
};

class RunLoop final : public Object {
public:
    using Handler = std::function<void()>;
    // Gives the host time of the next call, or nothing to end the timer.
    using TimerHandler = std::function<std::optional<std::uint64_t>()>;

    // Throws std::system_error where the system has no descriptors left.
    RunLoop();
    ~RunLoop() override;

    // Adds a descriptor, which stays its owner's. `readable` is called whenever there is something to read.
    // `hungUp` is called once, when nothing is left and the other side has gone; the source is out of its mode then. (A
    // socket stays readable at its end: there `readable` takes the source out itself.)
    // On the loop's own thread; throws std::system_error for a descriptor that cannot be waited for.
    [[nodiscard]] RunLoopSource addDescriptor(std::string_view mode, int descriptor, Handler readable, Handler hungUp);

    // Adds a timer that is first called at `fireTime` (host ticks; a time that has gone is at once). A timer that
    // ends is out of its mode. On the loop's own thread; throws std::system_error.
    [[nodiscard]] RunLoopSource addTimer(std::string_view mode, std::uint64_t fireTime, TimerHandler handler);

private:
    friend class RunLoopSource;
    friend CFRunLoopRunResult CFRunLoopRunInMode(CFStringRef, double, bool);
    friend void CFRunLoopPerformBlock(CFRunLoopRef, CFStringRef, std::function<void()>);
    friend void CFRunLoopStop(CFRunLoopRef) noexcept;
    friend void CFRunLoopWakeUp(CFRunLoopRef) noexcept;

    struct Source;
    struct Mode;
    struct QueuedBlock {
        std::string mode;
        std::function<void()> block;
    };
    enum class Wait : std::uint8_t { Woken, HandledSource, TimedOut };

    [[nodiscard]] CFRunLoopRunResult run(std::string_view mode, double seconds, bool returnAfterSourceHandled);
    void performBlocks(std::string_view mode);
    [[nodiscard]] Wait waitForSource(Mode& mode, std::optional<std::uint64_t> deadline);
    [[nodiscard]] Mode& modeNamed(std::string_view name);
    [[nodiscard]] RunLoopSource add(std::string_view mode, std::shared_ptr<Source> source);
    void remove(std::uint64_t identifier) noexcept;
    void wakeUp() noexcept;

    int _wakeDescriptor;
    std::atomic<bool> _isStopped{false};
    Mutex _blocksLock;
    std::vector<QueuedBlock> _blocks VELTO_GUARDED_BY(_blocksLock);

    // The loop's own thread alone.
    std::map<std::string, Mode, std::less<>> _modes;
    std::uint64_t _lastIdentifier = 0;
};

// The calling thread's loop, made on first use; it belongs to the thread. Throws std::system_error.
[[nodiscard]] CFRunLoopRef CFRunLoopGetCurrent();

// Runs the calling thread's loop: first the blocks that are queued for the mode, then one source after the other,
// until it is stopped, the mode has no sources, so many seconds have passed (infinity: never) or, if wanted, one
// source was handled. A stop wins over a handled source. A stop or block that came before the run is not lost.
CFRunLoopRunResult CFRunLoopRunInMode(CFStringRef mode, double seconds, bool returnAfterSourceHandled);

// Queues a block for the loop's thread, to be run when the loop runs in that mode. Does not wake it. Any thread.
void CFRunLoopPerformBlock(CFRunLoopRef loop, CFStringRef mode, std::function<void()> block);

// Ends the current or, where there is none, the next run. Any thread.
void CFRunLoopStop(CFRunLoopRef loop) noexcept;

// Makes a waiting loop look at its blocks. Any thread.
void CFRunLoopWakeUp(CFRunLoopRef loop) noexcept;

} // namespace VeltoTouch
