#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// Trace points. Each is a static probe of this library, "velto:kdebug_trace" with the code and its four arguments,
// that perf and bpftrace attach to:
//
//   bpftrace -e 'usdt:libVeltoPlatform.so:velto:kdebug_trace /arg0 == 0x2B150188/ { printf("event %d\n", arg1); }'
//
// Where nobody looks, it costs a few instructions.

namespace VeltoTouch {

// Emits a trace point. Any thread; never fails and never waits for a reader.
void kdebug_trace(std::uint32_t code, std::uint64_t arg1, std::uint64_t arg2, std::uint64_t arg3,
                  std::uint64_t arg4) noexcept;

// Keeps the newest trace points of all threads while it exists. For tests; one at a time.
class TraceCapture {
public:
    static constexpr std::size_t kKept = 4096;

    struct Point {
        std::uint32_t code;
        std::uint64_t arg1, arg2, arg3, arg4;
        friend bool operator==(const Point&, const Point&) = default;
    };

    TraceCapture();
    TraceCapture(const TraceCapture&) = delete;
    TraceCapture& operator=(const TraceCapture&) = delete;
    ~TraceCapture();

    // Oldest first.
    [[nodiscard]] std::vector<Point> points() const;
};

} // namespace VeltoTouch
