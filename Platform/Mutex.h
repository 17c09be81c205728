#pragma once

#include <pthread.h>

// Clang checks at compile time that a member marked VELTO_GUARDED_BY is only touched with its lock held.
#if defined(__clang__)
#define VELTO_THREAD_SAFETY(attribute) __attribute__((attribute))
#else
#define VELTO_THREAD_SAFETY(attribute)
#endif
#define VELTO_GUARDED_BY(mutex) VELTO_THREAD_SAFETY(guarded_by(mutex))
#define VELTO_REQUIRES(mutex) VELTO_THREAD_SAFETY(requires_capability(mutex))

namespace VeltoTouch {

// A non-recursive mutex with priority inheritance: while a real-time thread waits for it, its holder runs at that
// thread's priority.
class VELTO_THREAD_SAFETY(capability("mutex")) Mutex {
public:
    Mutex();
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;
    ~Mutex() { pthread_mutex_destroy(&_mutex); }

    void lock() noexcept VELTO_THREAD_SAFETY(acquire_capability()) { pthread_mutex_lock(&_mutex); }
    void unlock() noexcept VELTO_THREAD_SAFETY(release_capability()) { pthread_mutex_unlock(&_mutex); }

    // Tells thread-safety analysis that the lock is held. No run-time check.
    void assertHeld() const noexcept VELTO_THREAD_SAFETY(assert_capability(this)) {}

private:
    pthread_mutex_t _mutex;
};

// Holds a mutex for a scope.
class VELTO_THREAD_SAFETY(scoped_lockable) MutexLock {
public:
    explicit MutexLock(Mutex& mutex) noexcept VELTO_THREAD_SAFETY(acquire_capability(mutex)) : _mutex(mutex) {
        _mutex.lock();
    }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;
    ~MutexLock() VELTO_THREAD_SAFETY(release_capability()) { _mutex.unlock(); }

private:
    Mutex& _mutex;
};

} // namespace VeltoTouch
