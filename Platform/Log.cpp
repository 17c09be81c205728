#include "Platform/Log.h"

#include "Platform/Thread.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <thread>

#include <spdlog/async.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

namespace VeltoTouch {

class OSLog {
public:
    OSLog(std::string logSubsystem, std::string logCategory)
        : subsystem(std::move(logSubsystem)), category(std::move(logCategory)) {}

    const std::string subsystem;
    const std::string category;
};

namespace {

constexpr std::size_t kQueuedLines = 8192;
constexpr std::chrono::seconds kLongestDrain{1};
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

spdlog::level::level_enum spdlogLevel(os_log_type_t type) noexcept {
    switch (type) {
    case OS_LOG_TYPE_DEBUG:
        return spdlog::level::debug;
    case OS_LOG_TYPE_DEFAULT:
        return spdlog::level::info;
    case OS_LOG_TYPE_ERROR:
        return spdlog::level::err;
    }
    return spdlog::level::off;
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

const Settings& settings() {
    static const Settings fromEnvironment = Settings::fromEnvironment();
    return fromEnvironment;
}

std::atomic<int>& leastWeight() {
    static std::atomic<int> weightInForce{settings().leastWeight};
    return weightInForce;
}

// Counts the lines that the sink before it has written.
class WrittenLines final : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
public:
    std::atomic<std::uint64_t> count{0};

private:
    void sink_it_(const spdlog::details::log_msg& /*line*/) override { ++count; }
    void flush_() override {}
};

// The writer thread and its sinks. Never destroyed: threads may log until the process ends.
class Output {
public:
    Output() : _pool(std::make_shared<spdlog::details::thread_pool>(kQueuedLines, 1, beAnOrdinaryThread)) {
        _logger = std::make_shared<spdlog::async_logger>("velto", spdlog::sinks_init_list{makeSink(), _written}, _pool,
                                                         spdlog::async_overflow_policy::overrun_oldest);
        _logger->set_level(spdlog::level::debug);
        _logger->set_pattern("%H:%M:%S.%f %l %v");
        _logger->flush_on(spdlog::level::err);
    }

    void write(const OSLog& log, os_log_type_t type, std::string_view message) {
        ++_taken;
        _logger->log(spdlogLevel(type), "[{}:{}] {}", log.subsystem, log.category, message);
    }

    // Gives the writer time for the lines it has, but not for ever: what it writes to may be stalled.
    void drain() const {
        const auto end = std::chrono::steady_clock::now() + kLongestDrain;
        while (_written->count + _pool->overrun_counter() < _taken && std::chrono::steady_clock::now() < end)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        _logger->flush();
    }

    [[nodiscard]] std::uint64_t overrunCount() const { return _pool->overrun_counter(); }

private:
    static spdlog::sink_ptr makeSink() {
        if (settings().file.empty())
            return std::make_shared<spdlog::sinks::stderr_sink_mt>();
        try {
            return std::make_shared<spdlog::sinks::basic_file_sink_mt>(settings().file);
        } catch (const spdlog::spdlog_ex&) {
            return std::make_shared<spdlog::sinks::stderr_sink_mt>();
        }
    }

    std::shared_ptr<spdlog::details::thread_pool> _pool;
    std::shared_ptr<WrittenLines> _written = std::make_shared<WrittenLines>();
    std::shared_ptr<spdlog::async_logger> _logger;
    std::atomic<std::uint64_t> _taken{0};
};

std::atomic<Output*> openedOutput{nullptr};

Output& output() {
    static Output* const theOutput = [] {
        auto* opened = new Output;
        openedOutput.store(opened, std::memory_order_release);
        std::atexit([] { openedOutput.load()->drain(); });
        return opened;
    }();
    return *theOutput;
}

// What a capture collects. Never destroyed: threads may log until the process ends.
struct Captured {
    std::mutex lock;
    std::optional<std::vector<LogCapture::Line>> lines; // guarded by lock
};

Captured& captured() {
    static auto* const theLines = new Captured;
    return *theLines;
}

// Keeps the line if a capture is on.
bool capture(const OSLog& log, os_log_type_t type, std::string_view message) {
    const std::scoped_lock lock(captured().lock);
    auto& lines = captured().lines;
    if (lines)
        lines->push_back({.category = log.category, .type = type, .message = std::string(message)});
    return lines.has_value();
}

} // namespace

os_log_t os_log_create(const char* subsystem, const char* category) {
    if (settings().leastWeight != kOff)
        output(); // to open a file may block, and to start the writer: here, and not where the first line is logged
    static std::mutex lock;
    static auto* const logs = new std::vector<std::unique_ptr<OSLog>>; // guarded by lock; never destroyed
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
    try {
        if (!capture(*log, type, message))
            output().write(*log, type, message);
    } catch (...) {
        // A line that there is no memory for is lost; its caller goes on.
    }
}

std::uint64_t os_log_overrun_count() noexcept {
    const Output* const opened = openedOutput.load(std::memory_order_acquire);
    return opened != nullptr ? opened->overrunCount() : 0;
}

LogCapture::LogCapture(os_log_type_t level) {
    const std::scoped_lock lock(captured().lock);
    captured().lines.emplace();
    leastWeight().store(weight(level), std::memory_order_relaxed);
}

LogCapture::~LogCapture() {
    const std::scoped_lock lock(captured().lock);
    captured().lines.reset();
    leastWeight().store(settings().leastWeight, std::memory_order_relaxed);
}

std::vector<LogCapture::Line> LogCapture::lines() const {
    const std::scoped_lock lock(captured().lock);
    return *captured().lines;
}

} // namespace VeltoTouch
