#include "Velto/Bench/TroubleWatch.h"

#include "Plugin/Shared/ClockConversion.h"
#include "Velto/Host/Gesture.h"

#include <utility>

namespace VeltoTouch::Bench {

TroubleWatch::TroubleWatch(std::function<void(Trouble trouble)> troubleHandler)
    : _troubleHandler(std::move(troubleHandler)) {
    _pipeline.hidEventsHandler = [this](std::uint64_t, const HIDEvents& events) {
        _events = events;
        for (const Ref<HIDEvent>& event : events) {
            const auto gesture = gestureOf(*event);
            if (gesture && gesture->kind == GestureKind::Cancel)
                add(Trouble::Cancel);
        }
    };
    _pipeline.disjointImageHandler = [this](auto...) { add(Trouble::Gap); };
    _pipeline.invalidReportHandler = [this](auto...) { add(Trouble::Invalid); };
    _pipeline.firmwareEventHandler = [this](std::uint64_t, const InputReport::FirmwareEvent& event) {
        if (event.isReset())
            add(Trouble::Reset);
    };
}

void TroubleWatch::handle(const Frame& frame) {
    const std::uint64_t time = Util::machTimeFromNanoseconds(frame.timestampNs);
    _ended.reset();
    _events.clear();
    if (frame.type == Frame::Type::State)
        _pipeline.setState(time, frame.key, frame.value);
    else if (frame.type == Frame::Type::InputReport)
        _pipeline.handleInputReport(time, frame.report.data(), frame.report.size());
    if (auto step = frame.type == Frame::Type::InputReport ? Analysis::Track::stepOf(frame.report) : std::nullopt) {
        step->ns = frame.timestampNs;
        _observer.frame(*step, _pipeline.algs, _events);
    }
    for (Analysis::Touch& touch : _observer.takeEnded())
        _ended = std::move(touch);
}

void TroubleWatch::add(Trouble trouble) {
    ++_counts[static_cast<std::size_t>(trouble)];
    _troubleHandler(trouble);
}

} // namespace VeltoTouch::Bench
