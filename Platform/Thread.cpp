#include "Platform/Thread.h"

#include <thread>

#include <pthread.h>

namespace VeltoTouch::NSThread {

void detachNewThreadWithBlock(const char* name, std::function<void()> block) {
    std::thread thread([name, block = std::move(block)] {
        pthread_setname_np(pthread_self(), name);
        block();
    });
    thread.detach();
}

} // namespace VeltoTouch::NSThread
