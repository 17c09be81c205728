#include "Platform/Thread.h"

#include <string>
#include <thread>

#include <pthread.h>
#include <sched.h>

namespace VeltoTouch::NSThread {

void detachNewThreadWithBlock(const char* name, std::function<void()> block) {
    std::thread thread([name = std::string(name), block = std::move(block)] {
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
