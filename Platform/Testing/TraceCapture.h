#pragma once

#include "Platform/Backend/TraceReceiver.h"

#include <cstddef>
#include <vector>

namespace VeltoTouch {

// Keeps the newest trace points of all threads while it exists. One at a time.
class TraceCapture {
public:
    static constexpr std::size_t kKept = 4096;

    using Point = TracePoint;

    TraceCapture();
    TraceCapture(const TraceCapture&) = delete;
    TraceCapture& operator=(const TraceCapture&) = delete;
    ~TraceCapture();

    // Oldest first.
    [[nodiscard]] std::vector<Point> points() const;
};

} // namespace VeltoTouch
