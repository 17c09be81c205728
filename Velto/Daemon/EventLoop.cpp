#include "Velto/Daemon/EventLoop.h"

#include <cerrno>
#include <ctime>
#include <exception>
#include <tuple>
#include <utility>

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace VeltoTouch {
namespace {

// How late a timer may be, in microseconds.
constexpr std::uint64_t kUsualAccuracy = 0; // the library's own: wake-ups are put together
constexpr std::uint64_t kExactly = 1;

} // namespace

struct EventLoop::Source {
    EventLoop& loop;
    Handler handler;
    std::uint64_t intervalUs = 0; // of a timer
    EventSourceHandle handle;
};

EventLoop::EventLoop()
    : _loop(madeBy<EventLoopHandle>(sd_event_new, "event loop")), _posts(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!_posts.isOpen())
        throw std::system_error(errno, std::generic_category(), "event loop");
    addDescriptor(_posts.get(), [this] { runPosted(); });
    checked(sd_event_set_watchdog(_loop.get(), 1), "watchdog");
}

EventLoop::~EventLoop() = default;

// What a handler throws does not pass through the library.
int EventLoop::call(Source& source) noexcept {
    try {
        source.handler();
        return 0;
    } catch (...) {
        source.loop._failure = std::current_exception();
        return sd_event_exit(source.loop.handle(), 0);
    }
}

void EventLoop::addDescriptor(int descriptor, Handler handler) {
    const auto ready = [](sd_event_source*, int, std::uint32_t, void* source) {
        return call(*static_cast<Source*>(source));
    };
    auto source = std::make_unique<Source>(Source{.loop = *this, .handler = std::move(handler), .handle = nullptr});
    const auto make = [&](sd_event_source** handle) {
        return sd_event_add_io(_loop.get(), handle, descriptor, EPOLLIN, ready, source.get());
    };
    source->handle = madeBy<EventSourceHandle>(make, "event loop");
    _sources.push_back(std::move(source));
}

void EventLoop::addTimer(std::chrono::microseconds interval, Handler handler) {
    addTimer(interval, kUsualAccuracy, std::move(handler));
}

void EventLoop::addExactTimer(std::chrono::microseconds interval, Handler handler) {
    addTimer(interval, kExactly, std::move(handler));
}

void EventLoop::addTimer(std::chrono::microseconds interval, std::uint64_t accuracyUs, Handler handler) {
    const auto elapsed = [](sd_event_source* timer, std::uint64_t, void* data) {
        auto& source = *static_cast<Source*>(data);
        sd_event_source_set_time_relative(timer, source.intervalUs);
        sd_event_source_set_enabled(timer, SD_EVENT_ONESHOT);
        return call(source);
    };
    auto source = std::make_unique<Source>(Source{.loop = *this,
                                                  .handler = std::move(handler),
                                                  .intervalUs = static_cast<std::uint64_t>(interval.count()),
                                                  .handle = nullptr});
    const auto make = [&](sd_event_source** handle) {
        return sd_event_add_time_relative(_loop.get(), handle, CLOCK_MONOTONIC, source->intervalUs, accuracyUs, elapsed,
                                          source.get());
    };
    source->handle = madeBy<EventSourceHandle>(make, "timer");
    _sources.push_back(std::move(source));
}

void EventLoop::post(Handler block) {
    {
        const MutexLock guard(_lock);
        _posted.push_back(std::move(block));
    }
    const std::uint64_t one = 1;
    std::ignore = ::write(_posts.get(), &one, sizeof one); // fails only where it is full, and readable as well
}

void EventLoop::runPosted() {
    std::uint64_t count = 0;
    std::ignore = ::read(_posts.get(), &count, sizeof count);
    std::vector<Handler> posted;
    {
        const MutexLock guard(_lock);
        posted.swap(_posted);
    }
    for (const Handler& block : posted)
        block();
}

void EventLoop::run(std::optional<std::chrono::microseconds> longest) {
    if (longest)
        addTimer(*longest, kExactly, [this] { stop(); });
    checked(sd_event_loop(_loop.get()), "event loop");
    if (_failure)
        std::rethrow_exception(std::exchange(_failure, nullptr));
}

void EventLoop::stop() {
    post([this] { sd_event_exit(_loop.get(), 0); });
}

} // namespace VeltoTouch
