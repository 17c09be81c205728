#pragma once

#include <csignal>
#include <pthread.h>

namespace VeltoTouch {

// Sets the calling thread's blocked signals and restores the previous set on destruction. A thread that is created
// meanwhile inherits the set and keeps it.
class SignalMask {
public:
    explicit SignalMask(const sigset_t& blocked) noexcept { pthread_sigmask(SIG_SETMASK, &blocked, &_before); }
    SignalMask(const SignalMask&) = delete;
    SignalMask& operator=(const SignalMask&) = delete;
    ~SignalMask() { pthread_sigmask(SIG_SETMASK, &_before, nullptr); }

    [[nodiscard]] static sigset_t all() noexcept {
        sigset_t signals;
        sigfillset(&signals);
        return signals;
    }

private:
    sigset_t _before{};
};

} // namespace VeltoTouch
