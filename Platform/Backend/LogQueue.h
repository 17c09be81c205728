#pragma once

#include "Platform/Dispatch.h"
#include "Platform/Log.h"
#include "Platform/Mutex.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace VeltoTouch {

// The lines between the threads that log and the one that writes them out: a ring of bytes, each line a header with its
// text behind it.
//
// A real-time thread that adds a line never waits for an ordinary one: the lock inherits priority and is held for one
// copy, nothing is allocated, and a semaphore wakes the writer. The ring's memory is reserved at construction and first
// touched by lines. An empty ring starts again at its beginning, so a writer that keeps up uses a few pages of it.
class LogQueue {
public:
    static constexpr std::size_t kMostLines = 8192; // fewer if their texts fill the ring: 1 MiB, 24 bytes a line in it
    static constexpr std::size_t kLongestText = 65'536; // bytes

    struct Line {
        os_log_t log;
        os_log_type_t type;
        bool isCut; // its text was longer
        std::uint32_t length;
        std::chrono::system_clock::time_point time;
    };
    using Text = std::array<char, kLongestText>;

    // Adds a line. A line that does not fit drops the oldest ones. Any thread.
    void push(os_log_t log, os_log_type_t type, std::string_view text) noexcept;

    // Takes the oldest line. Returns false if there is none. The writer's thread.
    [[nodiscard]] bool take(Line& line, Text& text) noexcept;
    // Waits for lines. Called when all lines taken are written out; may return without a line. The writer's thread.
    void wait() noexcept;

    // Whether every line so far is written out. Any thread.
    [[nodiscard]] bool isDrained() noexcept;
    // The lines dropped so far. Any thread.
    [[nodiscard]] std::uint64_t overrunCount() noexcept;

private:
    static constexpr std::size_t kRoom = 1U << 20U;

    void write(const void* bytes, std::size_t count) noexcept VELTO_REQUIRES(_lock);
    void read(void* bytes, std::size_t count) noexcept VELTO_REQUIRES(_lock);
    void dropOldest() noexcept VELTO_REQUIRES(_lock);

    const Ref<DispatchSemaphore> _hasLines = dispatch_semaphore_create(0); // signalled when the first line comes
    Mutex _lock;
    const std::unique_ptr<char[]> _ring = std::make_unique_for_overwrite<char[]>(kRoom);
    // Offsets that only grow until the ring is empty; modulo its room they are places in it.
    std::size_t _begin VELTO_GUARDED_BY(_lock) = 0;
    std::size_t _end VELTO_GUARDED_BY(_lock) = 0;
    std::size_t _count VELTO_GUARDED_BY(_lock) = 0; // of lines
    std::uint64_t _overrunCount VELTO_GUARDED_BY(_lock) = 0;
    bool _isDrained VELTO_GUARDED_BY(_lock) = true; // no line has come since the writer began to wait
};

} // namespace VeltoTouch
