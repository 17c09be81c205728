#include "Platform/Thread.h"

#include <thread>

#include <pthread.h>

namespace VeltoTouch::NSThread {

void detachNewThreadWithBlock(const char* name, std::function<void()> block) {
    std::thread thread(std::move(block));
    pthread_setname_np(thread.native_handle(), name);
    thread.detach();
}

} // namespace VeltoTouch::NSThread
