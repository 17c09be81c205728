#pragma once

#include <cstdint>

namespace VeltoTouch {

struct TracePoint {
    std::uint32_t code;
    std::uint64_t arg1, arg2, arg3, arg4;
    friend bool operator==(const TracePoint&, const TracePoint&) = default;
};

// Receives a trace point on the thread that emits it, which may be a real-time one.
using TraceReceiver = void (*)(const TracePoint& point) noexcept;

// Passes every trace point to the receiver as well; null ends that. A thread that emits a point at that moment may
// still call the receiver afterwards. Any thread.
void receiveTracePoints(TraceReceiver receiver) noexcept;

} // namespace VeltoTouch
