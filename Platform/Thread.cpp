#include "Platform/Thread.h"

#include <string>
#include <thread>

#include <pthread.h>

namespace VeltoTouch::NSThread {

void detachNewThreadWithBlock(const char* name, std::function<void()> block) {
    std::thread thread([name = std::string(name), block = std::move(block)] {
        pthread_setname_np(pthread_self(), name.c_str());
        block();
    });
    thread.detach();
}

} // namespace VeltoTouch::NSThread
