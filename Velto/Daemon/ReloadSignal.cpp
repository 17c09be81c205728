#include "Velto/Daemon/ReloadSignal.h"

#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace VeltoTouch {
namespace {

bool isIgnored(int signal) noexcept {
    struct sigaction action {};
    ::sigaction(signal, nullptr, &action);
    return action.sa_handler == SIG_IGN;
}

bool hasTerminal() noexcept {
    return FileDescriptor(::open("/dev/tty", O_RDONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)).isOpen();
}

} // namespace

ReloadSignal::ReloadSignal(EventLoop& loop, EventLoop::Handler handler)
    : _loop(loop), _handler(std::move(handler)), _outlivesTerminal(isIgnored(SIGHUP)), _hadTerminal(hasTerminal()) {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    _descriptor = FileDescriptor(::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!_descriptor.isOpen())
        throw std::system_error(errno, std::generic_category(), "signals");
    loop.addDescriptor(_descriptor.get(), [this] { read(); });
}

void ReloadSignal::read() {
    signalfd_siginfo signal{};
    if (::read(_descriptor.get(), &signal, sizeof signal) != sizeof signal)
        return;
    const bool isOfShell = static_cast<pid_t>(signal.ssi_pid) == ::getsid(0);
    const bool hasTerminalGone = signal.ssi_code == SI_KERNEL || (_hadTerminal && isOfShell && !hasTerminal());
    if (!hasTerminalGone)
        _handler();
    else if (!_outlivesTerminal)
        _loop.stop();
}

} // namespace VeltoTouch
