#include "Velto/Commands/RunOutput.h"

#include "Platform/JSON.h"
#include "Velto/Output/EventLines.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/GestureTable.h"
#include "Velto/Output/Terminal.h"

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

class LineOutput final : public RunOutput {
public:
    LineOutput(std::string_view file, std::function<void()> failureHandler)
        : RunOutput(std::move(failureHandler)), _file(fileMember(file)) {}

private:
    void appendBeginning(std::string& /*text*/) override {}
    void appendEvent(std::string& text, const HIDEvent& event, std::uint64_t timeNs) override {
        appendEventLine(text, _file, event, timeNs);
    }
    void appendEnding(std::string& text, const Ending& ending, std::uint64_t events) override {
        for (const auto& [key, value] : ending.properties) {
            text += fmt::format(R"({{"kind":"property"{},"key":)", _file);
            JSON::appendString(text, key);
            text += R"(,"value":)";
            JSON::append(text, value.get());
            text += "}\n";
        }
        text += fmt::format(R"({{"kind":"summary"{},"reports":{},"events":{},"debugInfo":{},"eventStats":{}}})", _file,
                            ending.reports, events, JSON::text(ending.debugInfo.get()),
                            JSON::text(ending.eventStats.get())) +
                "\n";
    }

    const std::string _file; // the member of each line
};

class TableOutput final : public RunOutput {
public:
    TableOutput(std::string name, std::function<void()> failureHandler)
        : RunOutput(std::move(failureHandler)), _name(std::move(name)) {}

private:
    void appendBeginning(std::string& text) override { text += printable(_name) + "\n" + GestureTable::heading(); }
    void appendEvent(std::string& text, const HIDEvent& event, std::uint64_t timeNs) override {
        _gestures.add(gestureEventOf(event), timeNs);
        takeRows(text);
        if (const auto* hold = _gestures.holdInProgress(); hold != nullptr && _isTerminal)
            appendUnfinished(text, *hold);
    }
    void appendEnding(std::string& text, const Ending& ending, std::uint64_t events) override {
        _gestures.finish(ending.durationNs);
        takeRows(text);
        text += fmt::format("  {} reports, {} events\n", ending.reports, events) + _gestures.summary();
        for (const auto& [key, value] : ending.properties)
            text += printable(fmt::format("  {} = {}", key, JSON::text(value.get()))) + "\n";
    }

    // Its row when it has ended takes the place of this one.
    static void appendUnfinished(std::string& text, const GestureTable::Gesture& hold) {
        text += GestureTable::row(hold);
        text.back() = '\r';
    }

    void takeRows(std::string& text) { text += std::exchange(_rows, {}); }

    const std::string _name;
    const bool _isTerminal = standardOutputIsTerminal();
    std::string _rows; // of gestures that have ended
    GestureTable _gestures{[this](const GestureTable::Gesture& gesture) { _rows += GestureTable::row(gesture); }};
};

} // namespace

std::unique_ptr<RunOutput> RunOutput::make(bool asLines, const DeviceChoice& device,
                                           std::function<void()> failureHandler) {
    if (asLines)
        return std::make_unique<LineOutput>(device.file(), std::move(failureHandler));
    return std::make_unique<TableOutput>(device.name, std::move(failureHandler));
}

void RunOutput::begin() {
    std::string text;
    appendBeginning(text);
    writeStandardOutput(text);
}

void RunOutput::add(const HIDEvent& event, std::uint64_t timeNs) noexcept {
    ++_events;
    if (_failure)
        return;
    try {
        std::string text;
        appendEvent(text, event, timeNs);
        writeStandardOutput(text);
    } catch (...) {
        _failure = std::current_exception();
        _failureHandler();
    }
}

void RunOutput::end(const Ending& ending) {
    if (_failure)
        std::rethrow_exception(_failure);
    std::string text;
    appendEnding(text, ending, _events);
    writeStandardOutput(text);
}

} // namespace VeltoTouch::Velto
