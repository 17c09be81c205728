#include "Platform/Thread.h"

#include "Platform/SignalMask.h"

#include <csignal>
#include <string>
#include <thread>

#include <pthread.h>
#include <sched.h>

namespace VeltoTouch::NSThread {
namespace {

constexpr std::size_t kLongestName = 15; // characters

// A thread's own faults reach the handler that the host has for them: blocked, they end the process without it.
sigset_t allButFaults() noexcept {
    sigset_t signals = SignalMask::all();
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS})
        sigdelset(&signals, fault);
    return signals;
}

} // namespace

void detachNewThreadWithBlock(const char* name, std::function<void()> block) {
    const SignalMask blocked(allButFaults()); // which the new thread takes over
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
