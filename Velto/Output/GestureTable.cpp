#include "Velto/Output/GestureTable.h"

#include "Velto/Output/Terminal.h"

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

constexpr double kNanosecondsPerSecond = 1e9;
constexpr double kNanosecondsPerMillisecond = 1e6;

Colour colourOf(const std::string& name) {
    if (name == "tap" || name == "hold")
        return Colour::Green;
    return name == "rejected" ? Colour::Yellow : Colour::Red;
}

} // namespace

void GestureTable::add(const GestureEvent& event, std::uint64_t timeNs) {
    const std::string region(event.region.value_or(""));
    switch (event.gesture) {
    case VeltoTouch::Gesture::MayBegin:
        _touch = {.name = "", .region = region, .frame = event.frame, .startTimeNs = timeNs, .endTimeNs = timeNs};
        return;
    case VeltoTouch::Gesture::HoldStart:
        if (_touch) {
            _touch->name = "hold";
            _touch->region = region;
            _touch->endTimeNs = timeNs;
        }
        return;
    case VeltoTouch::Gesture::HoldChange:
        if (_touch) {
            _touch->region += " > " + region;
            _touch->endTimeNs = timeNs;
        }
        return;
    case VeltoTouch::Gesture::HoldEnd:
        return end("hold", timeNs);
    case VeltoTouch::Gesture::Tap:
        if (_touch)
            _touch->region = region;
        return end("tap", timeNs);
    case VeltoTouch::Gesture::Cancel:
        return end("rejected", timeNs);
    case VeltoTouch::Gesture::FirmwareReset:
        _touch = {.name = "", .region = "", .frame = 0, .startTimeNs = timeNs, .endTimeNs = timeNs};
        return end("firmware reset", timeNs);
    }
}

void GestureTable::finish(std::uint64_t timeNs) {
    if (_touch && _touch->name == "hold")
        end("hold, not ended", timeNs);
}

void GestureTable::end(std::string name, std::uint64_t timeNs) {
    if (!_touch)
        return;
    _touch->name = std::move(name);
    _touch->endTimeNs = timeNs;
    ++_counts[_touch->name][_touch->region];
    _show(*_touch);
    _touch.reset();
}

std::string GestureTable::summary() const {
    std::string text;
    for (const auto& [name, regions] : _counts) {
        for (const auto& [region, count] : regions)
            text += fmt::format("  {:>6} x {} {}\n", count, name, region);
    }
    return text;
}

std::string GestureTable::heading() {
    return coloured(Colour::Bold,
                    fmt::format("  {:>10}  {:>8}  {:>10}  {:<16} {}", "time", "lasts", "frame", "gesture", "region")) +
           "\n";
}

std::string GestureTable::row(const Gesture& gesture) {
    const double start = static_cast<double>(gesture.startTimeNs) / kNanosecondsPerSecond;
    const double duration = static_cast<double>(gesture.endTimeNs - gesture.startTimeNs) / kNanosecondsPerMillisecond;
    const std::string name = coloured(colourOf(gesture.name), fmt::format("{:<16}", gesture.name));
    return fmt::format("  {:>8.2f} s  {:>5.0f} ms  {:>10}  {} {}\n", start, duration, gesture.frame, name,
                       gesture.region);
}

} // namespace VeltoTouch::Velto
