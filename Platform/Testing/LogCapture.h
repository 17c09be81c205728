#pragma once

#include "Platform/Log.h"

#include <string>
#include <vector>

namespace VeltoTouch {

// Collects what is logged while it exists, from every thread, in place of what VELTO_LOG says. One at a
// time.
class LogCapture {
public:
    struct Line {
        std::string category;
        os_log_type_t type;
        std::string message;
    };

    // Enables messages from `level` up: debug takes all, default also errors.
    explicit LogCapture(os_log_type_t level);
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;
    ~LogCapture();

    // The lines so far, oldest first.
    [[nodiscard]] std::vector<Line> lines() const;
};

} // namespace VeltoTouch
