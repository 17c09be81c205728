#include "Platform/Trace.h"

#include "Platform/Mutex.h"

#include <algorithm>
#include <array>
#include <atomic>

#include <sys/sdt.h>

namespace VeltoTouch {
namespace {

// The points of a capture; the newest overwrites the oldest.
struct Ring {
    Mutex lock;
    std::array<TraceCapture::Point, TraceCapture::kKept> points VELTO_GUARDED_BY(lock){};
    std::size_t count VELTO_GUARDED_BY(lock) = 0; // of all points since the capture began
};

Ring& ring() {
    static auto* const theRing = new Ring; // never destroyed: threads may trace until the process ends
    return *theRing;
}

std::atomic<bool> isCaptured{false};

} // namespace

void kdebug_trace(std::uint32_t code, std::uint64_t arg1, std::uint64_t arg2, std::uint64_t arg3,
                  std::uint64_t arg4) noexcept {
    DTRACE_PROBE5(velto, kdebug_trace, code, arg1, arg2, arg3, arg4);
    if (!isCaptured.load(std::memory_order_relaxed))
        return;
    const MutexLock guard(ring().lock);
    ring().points.at(ring().count++ % TraceCapture::kKept) = {code, arg1, arg2, arg3, arg4};
}

TraceCapture::TraceCapture() {
    const MutexLock guard(ring().lock);
    ring().count = 0;
    isCaptured = true;
}

TraceCapture::~TraceCapture() { isCaptured = false; }

std::vector<TraceCapture::Point> TraceCapture::points() const {
    const MutexLock guard(ring().lock);
    const std::size_t kept = std::min(ring().count, kKept);
    std::vector<Point> points;
    for (std::size_t i = ring().count - kept; i < ring().count; ++i)
        points.push_back(ring().points.at(i % kKept));
    return points;
}

} // namespace VeltoTouch
