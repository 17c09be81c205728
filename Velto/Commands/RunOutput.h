#pragma once

#include "Platform/HIDEvent.h"
#include "Platform/Value.h"
#include "Velto/Options/Devices.h"

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace VeltoTouch::Velto {

// What `velto run` writes to the standard output: as JSON Lines or as a table for people. Begun and ended on one
// thread, told of the events between on another.
class RunOutput {
public:
    using Property = std::pair<std::string, Ref<Value>>; // never nil

    // What is known at the end of a run.
    struct Ending {
        std::uint64_t durationNs = 0; // since the start of scheduling
        std::uint64_t reports = 0;
        std::vector<Property> properties; // that were asked for
        Ref<Value> debugInfo;
        Ref<Value> eventStats;
    };

    // `failureHandler` is called when an event cannot be written, on that thread.
    [[nodiscard]] static std::unique_ptr<RunOutput> make(bool asLines, const DeviceChoice& device,
                                                         std::function<void()> failureHandler);
    RunOutput(const RunOutput&) = delete;
    RunOutput& operator=(const RunOutput&) = delete;
    virtual ~RunOutput() = default;

    // Throws what writeStandardOutput does.
    void begin();
    // Shows an event, at once. The first failure is kept; later events are only counted.
    void add(const HIDEvent& event, std::uint64_t timeNs) noexcept;
    // Throws what could not be written, now or before.
    void end(const Ending& ending);

protected:
    explicit RunOutput(std::function<void()> failureHandler) : _failureHandler(std::move(failureHandler)) {}

    virtual void appendBeginning(std::string& text) = 0;
    virtual void appendEvent(std::string& text, const HIDEvent& event, std::uint64_t timeNs) = 0;
    virtual void appendEnding(std::string& text, const Ending& ending, std::uint64_t events) = 0;

private:
    const std::function<void()> _failureHandler;
    std::uint64_t _events = 0;
    std::exception_ptr _failure;
};

} // namespace VeltoTouch::Velto
