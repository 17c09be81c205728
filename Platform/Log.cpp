#include "Platform/Log.h"

#include "Platform/Backend/LogDiversion.h"
#include "Platform/Backend/LogOutput.h"

#include <atomic>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>
#include <tuple>
#include <vector>

namespace VeltoTouch {
namespace {

constexpr int kOff = 3;

// Levels by weight, so that "from this level up" is one comparison.
constexpr int weight(os_log_type_t type) noexcept {
    switch (type) {
    case OS_LOG_TYPE_DEBUG:
        return 0;
    case OS_LOG_TYPE_DEFAULT:
        return 1;
    case OS_LOG_TYPE_ERROR:
        return 2;
    }
    return kOff;
}

// What VELTO_LOG says.
struct Settings {
    int leastWeight = weight(OS_LOG_TYPE_ERROR);
    std::string file; // empty: standard error

    static Settings fromEnvironment() {
        Settings settings;
        const char* variable = std::getenv("VELTO_LOG");
        if (variable == nullptr)
            return settings;
        const std::string_view text = variable;
        const auto colon = text.find(':');
        const std::string_view level = text.substr(0, colon);
        if (colon != std::string_view::npos)
            settings.file = text.substr(colon + 1);
        if (level == "debug")
            settings.leastWeight = weight(OS_LOG_TYPE_DEBUG);
        else if (level == "default")
            settings.leastWeight = weight(OS_LOG_TYPE_DEFAULT);
        else if (level == "off")
            settings.leastWeight = kOff;
        return settings;
    }
};

// Never destroyed, as nothing else here: threads may log until the process ends.
const Settings& settings() {
    static const auto* const fromEnvironment = new Settings(Settings::fromEnvironment());
    return *fromEnvironment;
}

std::atomic<int>& leastWeight() {
    static std::atomic<int> weightInForce{settings().leastWeight};
    return weightInForce;
}

std::atomic<LogOutput*> openedOutput{nullptr};

void openOutput() {
    static LogOutput* const theOutput = [] {
        auto* const opened = new LogOutput(settings().file);
        openedOutput.store(opened, std::memory_order_release);
        std::atexit([] { openedOutput.load()->drain(); });
        return opened;
    }();
    std::ignore = theOutput;
}

std::atomic<LogReceiver> divertedTo{nullptr};

} // namespace

os_log_t os_log_create(const char* subsystem, const char* category) {
    if (leastWeight() != kOff)
        openOutput(); // to open a file may block, and to start the writer: here, and not where the first line is logged
    static std::mutex lock;
    static auto* const logs = new std::vector<std::unique_ptr<OSLog>>; // guarded by lock
    const std::scoped_lock guard(lock);
    for (const auto& log : *logs) {
        if (log->subsystem == subsystem && log->category == category)
            return log.get();
    }
    logs->push_back(std::make_unique<OSLog>(subsystem, category));
    return logs->back().get();
}

bool os_log_type_enabled(os_log_t /*log*/, os_log_type_t type) noexcept {
    return weight(type) >= leastWeight().load(std::memory_order_relaxed);
}

void os_log_with_type(os_log_t log, os_log_type_t type, std::string_view message) noexcept {
    if (!os_log_type_enabled(log, type))
        return;
    if (const LogReceiver receiver = divertedTo.load(std::memory_order_relaxed); receiver != nullptr)
        receiver(*log, type, message);
    else if (LogOutput* const opened = openedOutput.load(std::memory_order_acquire))
        opened->queue.push(log, type, message);
}

std::uint64_t os_log_overrun_count() noexcept {
    LogOutput* const opened = openedOutput.load(std::memory_order_acquire);
    return opened != nullptr ? opened->queue.overrunCount() : 0;
}

void divertLog(os_log_type_t level, LogReceiver receiver) {
    divertedTo = receiver;
    leastWeight().store(weight(level), std::memory_order_relaxed);
}

void restoreLog() {
    divertedTo = nullptr;
    leastWeight().store(settings().leastWeight, std::memory_order_relaxed);
}

} // namespace VeltoTouch
