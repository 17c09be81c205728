#include "Platform/Testing/TraceCapture.h"

#include "Platform/Mutex.h"

#include <algorithm>
#include <array>

namespace VeltoTouch {
namespace {

// The points of a capture; the newest overwrites the oldest.
struct Ring {
    Mutex lock;
    std::array<TracePoint, TraceCapture::kKept> points VELTO_GUARDED_BY(lock){};
    std::size_t count VELTO_GUARDED_BY(lock) = 0; // of all points since the capture began
};

Ring& ring() {
    static auto* const theRing = new Ring; // never destroyed: threads may trace until the process ends
    return *theRing;
}

void keep(const TracePoint& point) noexcept {
    const MutexLock guard(ring().lock);
    ring().points.at(ring().count++ % TraceCapture::kKept) = point;
}

} // namespace

TraceCapture::TraceCapture() {
    {
        const MutexLock guard(ring().lock);
        ring().count = 0;
    }
    receiveTracePoints(keep);
}

TraceCapture::~TraceCapture() { receiveTracePoints(nullptr); }

std::vector<TracePoint> TraceCapture::points() const {
    const MutexLock guard(ring().lock);
    const std::size_t kept = std::min(ring().count, kKept);
    std::vector<TracePoint> points;
    for (std::size_t i = ring().count - kept; i < ring().count; ++i)
        points.push_back(ring().points.at(i % kKept));
    return points;
}

} // namespace VeltoTouch
