#include "Velto/Analysis/Track.h"

#include "Plugin/Shared/Keys.h"

#include <algorithm>
#include <optional>

namespace VeltoTouch::Analysis {
namespace {

// Returns nothing for a report that recognition does not see.
std::optional<Track::Step> stepOf(std::span<const std::uint8_t> report) {
    using Kind = Track::Step::Kind;
    if (const auto event = InputReport::FirmwareEvent::parse(report.data(), report.size()))
        return event->isReset() ? std::optional(Track::Step{.kind = Kind::Reset}) : std::nullopt;
    if (const auto image = InputReport::Image::parse(report.data(), report.size()))
        return Track::Step{.kind = Kind::Image, .image = *image};
    return std::nullopt;
}

} // namespace

Track::Track(const std::list<Frame>& frames) {
    if (frames.empty())
        return;
    const std::uint64_t start = frames.front().timestampNs;
    _durationNs = frames.back().timestampNs - start;
    _steps.reserve(frames.size());
    for (const Frame& frame : frames) {
        Step step;
        if (frame.type == Frame::Type::InputReport) {
            const auto seen = stepOf(frame.report);
            if (!seen)
                continue;
            step = *seen;
            _imageCount += step.kind == Step::Kind::Image ? 1 : 0;
        } else if (const auto key = Keys::below(Keys::kAlgsDomain, frame.key);
                   key && frame.type == Frame::Type::State) {
            step.kind = Step::Kind::Setting;
            step.setting = static_cast<std::uint32_t>(_writes.size());
            _writes.push_back({.key = std::string(*key), .value = frame.value});
        } else {
            continue;
        }
        step.ns = frame.timestampNs - start;
        _steps.push_back(step);
    }
}

bool Track::writes(std::string_view key) const noexcept {
    const auto own = Keys::belowAlgs(key);
    return own && std::ranges::find(_writes, *own, &Setting::key) != _writes.end();
}

void Track::play(const std::vector<Setting>& settings, const FrameHandler& handleFrame) const {
    Algs algs;
    std::vector<std::string> written;
    for (const Setting& setting : settings) {
        const auto key = Keys::belowAlgs(setting.key);
        if (!key)
            continue;
        algs.setState(written.emplace_back(*key), setting.value);
    }
    std::vector<Gesture> gestures; // of the frame in progress
    const auto handOver = [&](const Step& step, const auto& events) {
        translateEvents(events, gestures);
        for (Gesture& gesture : gestures)
            gesture.time = HostTime(step.ns);
        handleFrame(step, algs, gestures);
    };
    for (const Step& step : _steps) {
        switch (step.kind) {
        case Step::Kind::Image:
            handOver(step, algs.handleImage(step.image));
            break;
        case Step::Kind::Reset:
            handOver(step, algs.handleReset());
            break;
        case Step::Kind::Setting:
            if (const Setting& write = _writes[step.setting]; std::ranges::find(written, write.key) == written.end())
                algs.setState(write.key, write.value);
            break;
        }
    }
}

} // namespace VeltoTouch::Analysis
