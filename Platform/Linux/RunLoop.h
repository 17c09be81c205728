#pragma once

#include "Platform/FileDescriptor.h"
#include "Platform/Mutex.h"
#include "Platform/RunLoop.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The run loop on epoll: what every CFRunLoop is. Devices and event services add descriptors and timers to it.

namespace VeltoTouch {

class RunLoop;

// A source in a mode, removed when this is destroyed. Made, moved and destroyed on the loop's own thread, or after that
// thread has ended. Holds a reference to the loop.
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

class RunLoop final : public CFRunLoop {
public:
    using Handler = std::function<void()>;
    // Gives the host time of the next call, or nothing to end the timer.
    using TimerHandler = std::function<std::optional<std::uint64_t>()>;

    // Throws std::system_error where the system has no descriptors left.
    RunLoop();
    ~RunLoop() override;

    [[nodiscard]] static RunLoop& of(CFRunLoopRef loop) noexcept { return static_cast<RunLoop&>(*loop); }
    // Returns the calling thread's loop. Throws std::system_error.
    [[nodiscard]] static RunLoop& current() { return of(CFRunLoopGetCurrent()); }

    // Adds a descriptor, which the caller keeps. `readable` is called whenever there is something to read.
    // `hungUp` is called once, when nothing is left and the other side has gone; the source is out of its mode then. (A
    // socket stays readable at its end: there `readable` takes the source out itself.)
    // On the loop's own thread; throws std::system_error for a descriptor that cannot be waited for.
    [[nodiscard]] RunLoopSource addDescriptor(std::string_view mode, int descriptor, Handler readable, Handler hungUp);

    // Adds a timer that is first called at `fireTime` (host ticks; immediately if that has passed). A timer that
    // ends is out of its mode. On the loop's own thread; throws std::system_error.
    [[nodiscard]] RunLoopSource addTimer(std::string_view mode, std::uint64_t fireTime, TimerHandler handler);

    // The operations of Platform/RunLoop.h.
    [[nodiscard]] CFRunLoopRunResult run(std::string_view mode, double seconds, bool returnAfterSourceHandled);
    void performBlock(const std::string& mode, Handler block);
    void stop() noexcept;
    void wakeUp() noexcept;

private:
    friend class RunLoopSource;

    struct Source;
    struct Mode;
    struct QueuedBlock {
        std::string mode;
        Handler block;
    };
    enum class Wait : std::uint8_t { Woken, HandledSource, TimedOut };

    void performBlocks(std::string_view mode);
    [[nodiscard]] Wait waitForSource(Mode& mode, std::optional<std::uint64_t> deadline);
    [[nodiscard]] Mode& modeNamed(std::string_view name);
    [[nodiscard]] RunLoopSource add(std::string_view mode, std::shared_ptr<Source> source);
    void remove(std::uint64_t identifier) noexcept;

    const FileDescriptor _wakeDescriptor;
    std::atomic<bool> _isStopped{false};
    Mutex _blocksLock;
    std::vector<QueuedBlock> _blocks VELTO_GUARDED_BY(_blocksLock);

    // The loop's own thread alone.
    std::map<std::string, Mode, std::less<>> _modes;
    std::uint64_t _lastIdentifier = 0;
};

} // namespace VeltoTouch
