#include "Velto/Daemon/StopSignals.h"

#include <csignal>
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

StopSignals::StopSignals(EventLoop& loop) : _signals(kSignals) {
    loop.addDescriptor(_signals.get(), [&loop] { loop.stop(); });
}

void StopSignals::beginEnd() noexcept {
    if (_signals.next())
        setHandler(SIG_DFL, 0);
    else
        setHandler(restoreDefaults, SA_RESTART);
    _signals.unblock();
}

} // namespace VeltoTouch
