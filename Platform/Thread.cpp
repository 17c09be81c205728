#include "Platform/Thread.h"

#include <csignal>
#include <string>
#include <thread>

#include <pthread.h>
#include <sched.h>

namespace VeltoTouch::NSThread {
namespace {

constexpr std::size_t kLongestName = 15; // characters

// A new thread takes over the signals that its maker blocks.
class AllSignalsBlocked {
public:
    AllSignalsBlocked() noexcept {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &_before);
    }
    AllSignalsBlocked(const AllSignalsBlocked&) = delete;
    AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;
    ~AllSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &_before, nullptr); }

private:
    sigset_t _before{};
};

} // namespace

void detachNewThreadWithBlock(const char* name, std::function<void()> block) {
    const AllSignalsBlocked blocked;
    std::thread thread([name = std::string(name).substr(0, kLongestName), block = std::move(block)] {
        pthread_setname_np(pthread_self(), name.c_str());
        block();
    });
    thread.detach();
}

} // namespace VeltoTouch::NSThread

namespace VeltoTouch {

void beAnOrdinaryThread() noexcept {
    const sched_param parameters{.sched_priority = 0};
    pthread_setschedparam(pthread_self(), SCHED_OTHER, &parameters);
}

} // namespace VeltoTouch
