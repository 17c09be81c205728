#include "Platform/Testing/LogCapture.h"

#include "Platform/Backend/LogDiversion.h"
#include "Platform/Backend/LogOutput.h"
#include "Platform/Mutex.h"

#include <list>
#include <optional>

namespace VeltoTouch {
namespace {

// Never destroyed: threads may log until the process ends.
struct Captured {
    Mutex lock;
    std::optional<std::list<LogCapture::Line>> lines VELTO_GUARDED_BY(lock);
};

Captured& captured() {
    static auto* const theLines = new Captured;
    return *theLines;
}

void keep(const OSLog& log, os_log_type_t type, std::string_view message) noexcept {
    std::list<LogCapture::Line> line; // allocated without the lock
    line.push_back({.category = log.category, .type = type, .message = std::string(message)});
    const MutexLock guard(captured().lock);
    auto& lines = captured().lines;
    if (lines)
        lines->splice(lines->end(), line);
}

} // namespace

LogCapture::LogCapture(os_log_type_t level) {
    {
        const MutexLock guard(captured().lock);
        captured().lines.emplace();
    }
    divertLog(level, keep);
}

LogCapture::~LogCapture() {
    restoreLog();
    const MutexLock guard(captured().lock);
    captured().lines.reset();
}

std::vector<LogCapture::Line> LogCapture::lines() const {
    const MutexLock guard(captured().lock);
    return {captured().lines->begin(), captured().lines->end()};
}

} // namespace VeltoTouch
