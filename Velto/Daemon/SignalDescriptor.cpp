#include "Velto/Daemon/SignalDescriptor.h"

#include <cerrno>
#include <system_error>

#include <unistd.h>

namespace VeltoTouch {

SignalDescriptor::SignalDescriptor(std::initializer_list<int> signals) {
    sigemptyset(&_signals);
    for (const int signal : signals)
        sigaddset(&_signals, signal);
    pthread_sigmask(SIG_BLOCK, &_signals, nullptr);
    _descriptor = FileDescriptor(::signalfd(-1, &_signals, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!_descriptor.isOpen())
        throw std::system_error(errno, std::generic_category(), "signals");
}

std::optional<signalfd_siginfo> SignalDescriptor::next() const noexcept {
    signalfd_siginfo signal{};
    return ::read(get(), &signal, sizeof signal) == sizeof signal ? std::optional(signal) : std::nullopt;
}

void SignalDescriptor::unblock() const noexcept { pthread_sigmask(SIG_UNBLOCK, &_signals, nullptr); }

} // namespace VeltoTouch
