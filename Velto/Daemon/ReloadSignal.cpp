#include "Velto/Daemon/ReloadSignal.h"

#include "Platform/FileDescriptor.h"

#include <csignal>
#include <utility>

#include <fcntl.h>
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
    : _loop(loop), _handler(std::move(handler)), _outlivesTerminal(isIgnored(SIGHUP)),
      _hadTerminal(hasTerminal()), _signal{SIGHUP} {
    loop.addDescriptor(_signal.get(), [this] { read(); });
}

void ReloadSignal::read() {
    const auto signal = _signal.next();
    if (!signal)
        return;
    const bool isOfShell = static_cast<pid_t>(signal->ssi_pid) == ::getsid(0);
    const bool hasTerminalGone = signal->ssi_code == SI_KERNEL || (_hadTerminal && isOfShell && !hasTerminal());
    if (!hasTerminalGone)
        _handler();
    else if (!_outlivesTerminal)
        _loop.stop();
}

} // namespace VeltoTouch
