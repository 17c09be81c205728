#include "Velto/Daemon/StopSignals.h"

#include <csignal>
#include <exception>
#include <initializer_list>

namespace VeltoTouch {
namespace {

constexpr std::initializer_list<int> kSignals{SIGINT, SIGTERM};

void setHandler(void (*handler)(int), unsigned flags) noexcept {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = static_cast<int>(flags);
    for (const int signal : kSignals)
        ::sigaction(signal, &action, nullptr);
}

void restoreDefaults(int /*signal*/) { setHandler(SIG_DFL, 0); }

} // namespace

StopSignals::StopSignals(EventLoop& loop) : _loop(loop), _signals(kSignals) {
    loop.addDescriptor(_signals.get(), [&loop] { loop.stop(); });
}

void StopSignals::run(std::optional<std::chrono::microseconds> longest, const std::function<void()>& close) {
    std::exception_ptr failure;
    try {
        _loop.run(longest);
    } catch (...) {
        failure = std::current_exception();
    }
    close();
    beginEnd();
    if (failure)
        std::rethrow_exception(failure);
}

void StopSignals::beginEnd() noexcept {
    if (_signals.next())
        setHandler(SIG_DFL, 0);
    else
        setHandler(restoreDefaults, SA_RESTART);
    _signals.unblock();
}

} // namespace VeltoTouch
