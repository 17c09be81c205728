#pragma once

#include "Platform/Mutex.h"
#include "Velto/Daemon/MediaKeys.h"

#include <cstdint>
#include <exception>
#include <functional>

namespace VeltoTouch {

// MediaKeys behind a lock, for the host's queue and the loop. Any thread.
class SurfaceKeys {
public:
    // `output` outlives this and has the table's keys. `deliveredReports` returns the surface's reports so far, on any
    // thread. `failureHandler` is called if a key cannot be passed on, on the thread that tried and under the lock: it
    // must not call this.
    SurfaceKeys(KeyOutput& output, const KeyTable& table, std::function<std::uint64_t()> deliveredReports,
                std::function<void()> failureHandler);

    // Returns the key that the gesture pressed, or kNoKey. Keeps the first failure for the end; no key is pressed after
    // it.
    std::uint16_t handle(const Gesture& gesture) noexcept;

    // See MediaKeys.
    void setTable(const KeyTable& table) noexcept;

    // Called at intervals: releases the pressed key if no report has arrived since the previous call. A touched surface
    // reports all the time; one that falls silent will not report the end of a hold.
    void releaseIfSilent() noexcept;

    // Called after the last gesture. Throws the first failure, of now or before.
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
