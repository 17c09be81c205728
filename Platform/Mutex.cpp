#include "Platform/Mutex.h"

#include <system_error>

namespace VeltoTouch {

Mutex::Mutex() {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_setprotocol(&attributes, PTHREAD_PRIO_INHERIT);
    const int error = pthread_mutex_init(&_mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
    if (error != 0)
        throw std::system_error(error, std::generic_category(), "mutex");
}

} // namespace VeltoTouch
