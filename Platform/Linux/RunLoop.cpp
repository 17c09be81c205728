#include "Platform/Linux/RunLoop.h"

#include "Platform/Clock.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <ratio>
#include <system_error>
#include <utility>

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace VeltoTouch {
namespace {

constexpr std::uint64_t kWakeIdentifier = 0;
constexpr std::uint64_t kNanosecondsPerMillisecond = 1'000'000;
constexpr double kLongestWaitSeconds = 1e9;             // what is longer waits for ever
constexpr std::uint64_t kLongestWaitMs = 1'000'000'000; // of one epoll_wait

int checked(int result, const char* what) {
    if (result < 0)
        throw std::system_error(errno, std::generic_category(), what);
    return result;
}

void watch(int epoll, int descriptor, std::uint64_t identifier) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.u64 = identifier;
    checked(epoll_ctl(epoll, EPOLL_CTL_ADD, descriptor, &event), "run loop source");
}

// The ticks of the host clock are nanoseconds of the clock that timers run by.
void arm(int timer, std::uint64_t fireTime) {
    const auto time = static_cast<std::int64_t>(std::max<std::uint64_t>(fireTime, 1)); // 0 would disarm it
    itimerspec setting{};
    setting.it_value.tv_sec = time / 1'000'000'000;
    setting.it_value.tv_nsec = time % 1'000'000'000;
    timerfd_settime(timer, TFD_TIMER_ABSTIME, &setting, nullptr);
}

// Milliseconds until the deadline, rounded up; -1, for ever, where there is none.
int waitMs(std::optional<std::uint64_t> deadline) {
    if (!deadline)
        return -1;
    const std::uint64_t now = mach_absolute_time();
    if (*deadline <= now)
        return 0;
    const std::uint64_t wait = (*deadline - now + kNanosecondsPerMillisecond - 1) / kNanosecondsPerMillisecond;
    return static_cast<int>(std::min(wait, kLongestWaitMs));
}

} // namespace

// Called when its descriptor is ready.
struct RunLoop::Source {
    int descriptor;
    FileDescriptor owned;                        // a timer's; none for a descriptor that is somebody else's
    std::function<bool(bool isReadable)> handle; // false: take the source out
};

struct RunLoop::Mode {
    FileDescriptor epoll{checked(epoll_create1(EPOLL_CLOEXEC), "run loop")};
    std::map<std::uint64_t, std::shared_ptr<Source>> sources;
};

RunLoopSource::RunLoopSource(RunLoop& loop, std::uint64_t identifier) noexcept
    : _loop(Ref<RunLoop>::retained(&loop)), _identifier(identifier) {}

RunLoopSource::RunLoopSource(RunLoopSource&& other) noexcept
    : _loop(std::move(other._loop)), _identifier(other._identifier) {}

RunLoopSource& RunLoopSource::operator=(RunLoopSource&& other) noexcept {
    std::swap(_loop, other._loop);
    std::swap(_identifier, other._identifier);
    return *this;
}

RunLoopSource::~RunLoopSource() {
    if (_loop)
        _loop->remove(_identifier);
}

RunLoop::RunLoop() : _wakeDescriptor(checked(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "run loop")) {}

RunLoop::~RunLoop() = default;

RunLoop::Mode& RunLoop::modeNamed(std::string_view name) {
    if (const auto known = _modes.find(name); known != _modes.end())
        return known->second;
    const auto mode = _modes.try_emplace(std::string(name)).first;
    try {
        watch(mode->second.epoll.get(), _wakeDescriptor.get(), kWakeIdentifier);
    } catch (...) {
        _modes.erase(mode); // it could not be woken
        throw;
    }
    return mode->second;
}

RunLoopSource RunLoop::add(std::string_view mode, std::shared_ptr<Source> source) {
    Mode& target = modeNamed(mode);
    const std::uint64_t identifier = ++_lastIdentifier;
    watch(target.epoll.get(), source->descriptor, identifier);
    target.sources.emplace(identifier, std::move(source));
    return {*this, identifier};
}

RunLoopSource RunLoop::addDescriptor(std::string_view mode, int descriptor, Handler readable, Handler hungUp) {
    auto handle = [readable = std::move(readable), hungUp = std::move(hungUp)](bool isReadable) {
        isReadable ? readable() : hungUp();
        return isReadable;
    };
    return add(mode,
               std::make_shared<Source>(Source{.descriptor = descriptor, .owned = {}, .handle = std::move(handle)}));
}

RunLoopSource RunLoop::addTimer(std::string_view mode, std::uint64_t fireTime, TimerHandler handler) {
    FileDescriptor owned(checked(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK), "run loop timer"));
    const int timer = owned.get();
    auto handle = [timer, handler = std::move(handler)](bool /*isReadable*/) {
        const auto next = handler();
        if (next && *next > mach_absolute_time()) // otherwise it stays readable
            arm(timer, *next);
        return next.has_value();
    };
    arm(timer, fireTime);
    return add(mode, std::make_shared<Source>(
                         Source{.descriptor = timer, .owned = std::move(owned), .handle = std::move(handle)}));
}

void RunLoop::remove(std::uint64_t identifier) noexcept {
    for (auto& [name, mode] : _modes) {
        const auto source = mode.sources.find(identifier);
        if (source == mode.sources.end())
            continue;
        epoll_ctl(mode.epoll.get(), EPOLL_CTL_DEL, source->second->descriptor, nullptr);
        mode.sources.erase(source);
        return;
    }
}

CFRunLoopRunResult RunLoop::run(std::string_view mode, double seconds, bool returnAfterSourceHandled) {
    std::optional<std::uint64_t> deadline;
    if (seconds < kLongestWaitSeconds)
        deadline = mach_absolute_time() + static_cast<std::uint64_t>(std::max(seconds, 0.0) * std::nano::den);
    for (auto wait = Wait::Woken;;) {
        performBlocks(mode);
        if (_isStopped.exchange(false))
            return kCFRunLoopRunStopped;
        if (wait == Wait::HandledSource && returnAfterSourceHandled)
            return kCFRunLoopRunHandledSource;
        const auto named = _modes.find(mode);
        if (named == _modes.end() || named->second.sources.empty())
            return kCFRunLoopRunFinished;
        if (wait != Wait::Woken && deadline && *deadline <= mach_absolute_time())
            return kCFRunLoopRunTimedOut;
        wait = waitForSource(named->second, deadline);
    }
}

// Blocks that are queued meanwhile stay for the next time.
void RunLoop::performBlocks(std::string_view mode) {
    std::vector<QueuedBlock> due;
    {
        const MutexLock guard(_blocksLock);
        const auto others = std::stable_partition(_blocks.begin(), _blocks.end(),
                                                  [mode](const QueuedBlock& queued) { return queued.mode == mode; });
        std::move(_blocks.begin(), others, std::back_inserter(due));
        _blocks.erase(_blocks.begin(), others);
    }
    for (const QueuedBlock& queued : due)
        queued.block();
}

RunLoop::Wait RunLoop::waitForSource(Mode& mode, std::optional<std::uint64_t> deadline) {
    epoll_event ready{};
    const int count = epoll_wait(mode.epoll.get(), &ready, 1, waitMs(deadline));
    if (count == 0)
        return Wait::TimedOut;
    if (count < 0 || ready.data.u64 == kWakeIdentifier) {
        std::uint64_t signals = 0;
        (void)!::read(_wakeDescriptor.get(), &signals, sizeof signals);
        return Wait::Woken;
    }
    const std::uint64_t identifier = ready.data.u64;
    const auto known = mode.sources.find(identifier);
    if (known == mode.sources.end())
        return Wait::Woken;
    const std::shared_ptr<Source> source = known->second; // it may take itself out
    // Left in its mode, a descriptor that hung up would be ready for ever.
    if ((ready.events & EPOLLIN) == 0U)
        remove(identifier);
    if (!source->handle((ready.events & EPOLLIN) != 0U))
        remove(identifier);
    return Wait::HandledSource;
}

void RunLoop::wakeUp() noexcept {
    const std::uint64_t signal = 1;
    (void)!::write(_wakeDescriptor.get(), &signal, sizeof signal);
}

void RunLoop::performBlock(const std::string& mode, Handler block) {
    const MutexLock guard(_blocksLock);
    _blocks.push_back({.mode = mode, .block = std::move(block)});
}

void RunLoop::stop() noexcept {
    _isStopped = true;
    wakeUp();
}

} // namespace VeltoTouch
