#pragma once

#include <csignal>
#include <pthread.h>

namespace VeltoTouch {

// The signals that the calling thread blocks while this lives, in place of those that it blocked before. A thread that
// is made meanwhile blocks them for good.
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
