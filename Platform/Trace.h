#pragma once

#include <cstdint>

// Trace points. Each is a static probe of this library, "velto:kdebug_trace" with the code and its four arguments,
// that perf and bpftrace attach to: Docs/tracing.md lists the codes.
// A point that nobody is attached to costs a few instructions.

namespace VeltoTouch {

// Emits a trace point. Any thread; never fails and never waits for a reader.
void kdebug_trace(std::uint32_t code, std::uint64_t arg1, std::uint64_t arg2, std::uint64_t arg3,
                  std::uint64_t arg4) noexcept;

} // namespace VeltoTouch
