#pragma once

#include "Platform/Log.h"

#include <string_view>

namespace VeltoTouch {

// Receives a message on the thread that logs it, which may be a real-time one. Must not log.
using LogReceiver = void (*)(const OSLog& log, os_log_type_t type, std::string_view message) noexcept;

// Passes messages from `level` up to the receiver in place of the log's output, until restoreLog. A thread that logs at
// that moment may still call the receiver afterwards. Any thread.
void divertLog(os_log_type_t level, LogReceiver receiver);
void restoreLog();

} // namespace VeltoTouch
