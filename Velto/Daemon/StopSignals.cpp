#include "Velto/Daemon/StopSignals.h"

#include <cerrno>
#include <csignal>
#include <initializer_list>
#include <system_error>

#include <sys/signalfd.h>
#include <unistd.h>

namespace VeltoTouch {
namespace {

constexpr std::initializer_list<int> kSignals{SIGINT, SIGTERM};

sigset_t signalSet() noexcept {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : kSignals)
        sigaddset(&set, signal);
    return set;
}

void setHandler(void (*handler)(int), unsigned flags) noexcept {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = static_cast<int>(flags);
    for (const int signal : kSignals)
        ::sigaction(signal, &action, nullptr);
}

void restoreDefaults(int /*signal*/) { setHandler(SIG_DFL, 0); }

} // namespace

StopSignals::StopSignals(EventLoop& loop) {
    const sigset_t set = signalSet();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    _descriptor = FileDescriptor(::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!_descriptor.isOpen())
        throw std::system_error(errno, std::generic_category(), "signals");
    loop.addDescriptor(_descriptor.get(), [&loop] { loop.stop(); });
}

void StopSignals::beginEnd() noexcept {
    signalfd_siginfo signal{};
    const bool hasCome = ::read(_descriptor.get(), &signal, sizeof signal) > 0;
    if (hasCome)
        setHandler(SIG_DFL, 0);
    else
        setHandler(restoreDefaults, SA_RESTART);
    const sigset_t set = signalSet();
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

} // namespace VeltoTouch
