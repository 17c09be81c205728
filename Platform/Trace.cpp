#include "Platform/Trace.h"

#include "Platform/Backend/TraceReceiver.h"

#include <atomic>

#include <sys/sdt.h>

namespace VeltoTouch {
namespace {

std::atomic<TraceReceiver> receiver{nullptr};

} // namespace

void kdebug_trace(std::uint32_t code, std::uint64_t arg1, std::uint64_t arg2, std::uint64_t arg3,
                  std::uint64_t arg4) noexcept {
    DTRACE_PROBE5(velto, kdebug_trace, code, arg1, arg2, arg3, arg4);
    if (const TraceReceiver receive = receiver.load(std::memory_order_relaxed); receive != nullptr)
        receive({code, arg1, arg2, arg3, arg4});
}

void receiveTracePoints(TraceReceiver newReceiver) noexcept { receiver = newReceiver; }

} // namespace VeltoTouch
