#pragma once

#include "Platform/Backend/LogQueue.h"

#include <memory>
#include <string>

namespace spdlog {
class logger;
}

namespace VeltoTouch {

class OSLog {
public:
    OSLog(std::string logSubsystem, std::string logCategory)
        : subsystem(std::move(logSubsystem)), category(std::move(logCategory)) {}

    const std::string subsystem;
    const std::string category;
};

// The queue of lines, and the ordinary thread that writes them out. Never destroyed.
class LogOutput {
public:
    // Opens the file to append to it, and starts the thread. Without a name, or if the file cannot be opened, lines go
    // to standard error.
    explicit LogOutput(const std::string& file);

    LogQueue queue;

    // Waits until all lines are written, at most a second: the file may be stalled.
    void drain();

private:
    [[noreturn]] void writeLines();
    void write(const LogQueue::Line& line) noexcept;

    // The writer's.
    const std::unique_ptr<spdlog::logger> _logger;
    LogQueue::Text _text; // of the line being written
};

} // namespace VeltoTouch
