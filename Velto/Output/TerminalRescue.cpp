#include "Velto/Output/TerminalRescue.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>

#include <poll.h>
#include <sys/time.h>
#include <termios.h>
#include <unistd.h>

namespace VeltoTouch::Velto::TerminalRescue {
namespace {

constexpr std::array kFaults{SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT};
constexpr std::array kStops{SIGTERM, SIGINT, SIGHUP, SIGQUIT};

// What the terminal was, and what makes it so.
struct Kept {
    termios modes{};
    std::array<char, 256> text{};
    std::size_t length = 0;
};
Kept kept;

// Called by signal handlers.
void restoreTerminal() noexcept {
    ::tcsetattr(STDOUT_FILENO, TCSANOW, &kept.modes);
    if (isReady(STDOUT_FILENO, POLLOUT))
        (void)!::write(STDOUT_FILENO, kept.text.data(), kept.length);
}

void endByFault(int signal) {
    restoreTerminal();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

// The program has waited for the terminal for long. A stop signal would wait as well: it is blocked.
void endIfStopped(int /*signal*/) {
    sigset_t pending;
    sigpending(&pending);
    for (const int signal : kStops) {
        if (sigismember(&pending, signal) != 1)
            continue;
        restoreTerminal();
        ::_exit(128 + signal);
    }
}

void setHandler(int signal, void (*handler)(int)) noexcept {
    struct sigaction action {};
    action.sa_handler = handler;
    ::sigaction(signal, &action, nullptr);
}

void setTimer(time_t seconds) noexcept {
    const itimerval timer{.it_interval = {.tv_sec = seconds, .tv_usec = 0},
                          .it_value = {.tv_sec = seconds, .tv_usec = 0}};
    ::setitimer(ITIMER_REAL, &timer, nullptr);
}

} // namespace

bool isReady(int descriptor, short events) noexcept {
    pollfd state{.fd = descriptor, .events = events, .revents = 0};
    return ::poll(&state, 1, 0) > 0 && (state.revents & events) != 0;
}

void keepModes() noexcept { ::tcgetattr(STDOUT_FILENO, &kept.modes); }

void begin(std::initializer_list<const char*> texts) noexcept {
    kept.length = 0;
    for (const char* const text : texts) {
        if (text == nullptr)
            continue;
        const std::size_t length = std::min(std::strlen(text), kept.text.size() - kept.length);
        std::memcpy(kept.text.data() + kept.length, text, length);
        kept.length += length;
    }
    for (const int signal : kFaults)
        setHandler(signal, endByFault);
    setHandler(SIGALRM, endIfStopped);
}

void end() noexcept {
    for (const int signal : kFaults)
        setHandler(signal, SIG_DFL);
}

Patience::Patience() noexcept { setTimer(1); }
Patience::~Patience() { setTimer(0); }

} // namespace VeltoTouch::Velto::TerminalRescue
