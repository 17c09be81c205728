#include "Velto/Commands/RunOutput.h"

#include "Platform/JSON.h"
#include "Velto/Analysis/Counted.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"

#include <fmt/format.h>

namespace VeltoTouch::Velto {

RunOutput::RunOutput(bool asLines, const DeviceChoice& device, std::function<void()> failureHandler)
    : _asLines(asLines), _file(fileMember(device.file())),
      _gestures(asLines ? GestureText::eventLines(device.file())
                        : GestureText::table(device.name, standardOutputIsTerminal())),
      _failureHandler(std::move(failureHandler)) {}

void RunOutput::begin() { writeStandardOutput(_gestures->heading()); }

void RunOutput::add(const Gesture& gesture) noexcept {
    ++_events;
    if (_failure)
        return;
    try {
        std::string text;
        _gestures->add(text, gesture);
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
    _gestures->finish(text, ending.duration);
    _asLines ? appendLines(text, ending) : appendTable(text, ending);
    writeStandardOutput(text);
}

void RunOutput::appendLines(std::string& text, const Ending& ending) const {
    for (const auto& [key, value] : ending.properties) {
        text += fmt::format(R"({{"kind":"property"{},"key":{},"value":{}}})"
                            "\n",
                            _file, JSON::quoted(key), JSON::text(value.get()));
    }
    text +=
        fmt::format(R"({{"kind":"summary"{},"reports":{},"events":{},"debugInfo":{},"eventStats":{}}})", _file,
                    ending.reports, _events, JSON::text(ending.debugInfo.get()), JSON::text(ending.eventStats.get())) +
        "\n";
}

void RunOutput::appendTable(std::string& text, const Ending& ending) const {
    text +=
        fmt::format("  {}, {}\n", Analysis::counted(ending.reports, "report"), Analysis::counted(_events, "event")) +
        _gestures->summary();
    for (const auto& [key, value] : ending.properties)
        text += printable(fmt::format("  {} = {}", key, JSON::text(value.get()))) + "\n";
}

} // namespace VeltoTouch::Velto
