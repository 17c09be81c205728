#include "Velto/Bench/LiveRecognition.h"

#include "Plugin/Recording/Player.h"

namespace VeltoTouch::Bench {

LiveRecognition::LiveRecognition() {
    using enum Disturbance::Kind;
    using Step = Analysis::Track::Step;
    _pipeline.imageHandler = [this](std::uint64_t, const InputReport::Image& image) {
        _seen.step = Step{.kind = Step::Kind::Image, .image = image};
    };
    _pipeline.firmwareEventHandler = [this](std::uint64_t, const InputReport::FirmwareEvent& event) {
        if (!event.isReset())
            return;
        _seen.step = Step{.kind = Step::Kind::Reset};
        _seen.disturbance = Reset;
    };
    _pipeline.disjointImageHandler = [this](auto...) { _seen.disturbance = Gap; };
    _pipeline.invalidReportHandler = [this](auto...) {
        _seen.disturbance = InvalidReport;
        ++_invalidReports;
    };
    _pipeline.hidEventsHandler = [this](std::uint64_t, const auto& events) { translateEvents(events, _seen.gestures); };
}

const LiveRecognition::Seen& LiveRecognition::handle(const Frame& frame) {
    _seen.step.reset();
    _seen.disturbance.reset();
    _seen.gestures.clear();
    Player::play(frame, _pipeline);
    if (_seen.step)
        _seen.step->ns = frame.timestampNs;
    return _seen;
}

} // namespace VeltoTouch::Bench
