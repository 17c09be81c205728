#pragma once

#include <cstdint>
#include <string_view>

// The platform log. A component creates one log per category and, before it builds a message, asks whether the level is
// enabled. Logging never blocks its caller, which may be a real-time thread: lines go through a bounded queue (8192
// lines, 1 MiB) to a writer thread (`Backend/LogOutput.h`), and when the queue is full the oldest line is overrun and
// counted. A text above 65,536 bytes is cut and ends in "...". At its end the process gives the writer a second for
// what it has.
//
// The environment variable VELTO_LOG chooses what is written and where: LEVEL or LEVEL:FILE, LEVEL being
// debug, default, error (where it is not set) or off; without a FILE lines go to standard error.

namespace VeltoTouch {

enum os_log_type_t : std::uint8_t {
    OS_LOG_TYPE_DEBUG = 0x02,
    OS_LOG_TYPE_DEFAULT = 0x00,
    OS_LOG_TYPE_ERROR = 0x10,
};

class OSLog;
using os_log_t = const OSLog*;

// Returns the log of a category of a component, which lives until the process ends; equal arguments may give the same
// log. May block: opens the log's file and starts the writer. Any thread but a real-time one.
[[nodiscard]] os_log_t os_log_create(const char* subsystem, const char* category);

// Returns whether messages of this level are logged: one relaxed load. Any thread.
[[nodiscard]] bool os_log_type_enabled(os_log_t log, os_log_type_t type) noexcept;

// Logs one message if its level is enabled. Any thread; never waits for an ordinary one, never throws.
void os_log_with_type(os_log_t log, os_log_type_t type, std::string_view message) noexcept;

// Returns how many lines found the queue full and overran an older one, since the process began. Any thread.
[[nodiscard]] std::uint64_t os_log_overrun_count() noexcept;

} // namespace VeltoTouch
