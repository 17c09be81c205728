#include "Platform/Backend/LogOutput.h"

#include "Platform/Thread.h"

#include <cstdio>
#include <thread>

#include <fmt/format.h>
#include <spdlog/logger.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <unistd.h>

namespace VeltoTouch {
namespace {

constexpr std::chrono::seconds kLongestDrain{1};

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

// By a stream of the writer's own: while nobody reads, the writer holds its lock, and the end of the program flushes
// stderr.
spdlog::sink_ptr standardError() {
    std::FILE* const stream = ::fdopen(STDERR_FILENO, "w");
    if (stream == nullptr)
        return std::make_shared<spdlog::sinks::stderr_sink_st>();
    std::setvbuf(stream, nullptr, _IONBF, 0);
    return std::make_shared<spdlog::sinks::stdout_sink_base<spdlog::details::console_nullmutex>>(stream);
}

spdlog::sink_ptr makeSink(const std::string& file) {
    if (file.empty())
        return standardError();
    try {
        return std::make_shared<spdlog::sinks::basic_file_sink_st>(file);
    } catch (const spdlog::spdlog_ex&) {
        return standardError();
    }
}

} // namespace

LogOutput::LogOutput(const std::string& file) : _logger(std::make_unique<spdlog::logger>("velto", makeSink(file))) {
    _logger->set_level(spdlog::level::debug);
    _logger->set_pattern("%H:%M:%S.%f %l %v");
    NSThread::detachNewThreadWithBlock("velto log", [this] { writeLines(); });
}

void LogOutput::drain() {
    const auto end = std::chrono::steady_clock::now() + kLongestDrain;
    while (!queue.isDrained() && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void LogOutput::writeLines() {
    beAnOrdinaryThread();
    for (LogQueue::Line line{};;) {
        while (queue.take(line, _text))
            write(line);
        _logger->flush();
        queue.wait();
    }
}

void LogOutput::write(const LogQueue::Line& line) noexcept {
    try {
        const std::string_view text(_text.data(), line.length);
        _logger->log(
            line.time, {}, spdlogLevel(line.type),
            fmt::format("[{}:{}] {}{}", line.log->subsystem, line.log->category, text, line.isCut ? "..." : ""));
    } catch (...) {
        // Out of memory: the line is lost.
    }
}

} // namespace VeltoTouch
