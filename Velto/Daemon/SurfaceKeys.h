#pragma once

#include "Platform/Mutex.h"
#include "Velto/Daemon/MediaKeys.h"

#include <cstdint>
#include <exception>
#include <functional>

namespace VeltoTouch {

// The media keys of a surface that is served. Gestures come on the host's queue, everything else from other threads.
class SurfaceKeys {
public:
    // `output` outlives this. `deliveredReports`: of the surface, so far; any thread. `failureHandler` is called when a
    // key cannot be passed on, on that thread.
    SurfaceKeys(KeyOutput& output, std::function<std::uint64_t()> deliveredReports,
                std::function<void()> failureHandler);

    // The first failure is kept for the end; no key is pressed after it.
    void handle(const Gesture& gesture) noexcept;

    // To be called every now and then: where no report has come since the call before, it releases what is pressed. A
    // surface that is touched reports all the time; one that falls silent has no end of a hold to tell of.
    void releaseIfSilent() noexcept;

    // After the last gesture. Throws what failed, now or before.
    void end();

private:
    template <class Work>
    void attempt(const Work& work) noexcept;

    const std::function<std::uint64_t()> _deliveredReports;
    const std::function<void()> _failureHandler;
    Mutex _lock;
    MediaKeys _keys VELTO_GUARDED_BY(_lock);
    std::exception_ptr _failure VELTO_GUARDED_BY(_lock);
    std::uint64_t _lastReports VELTO_GUARDED_BY(_lock) = 0;
};

} // namespace VeltoTouch
