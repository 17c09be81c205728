#include "Velto/Bench/Observation.h"

#include <algorithm>
#include <utility>

namespace VeltoTouch::Bench {
namespace {

Moment::State stateOf(const HandStats& hand) noexcept {
    if (hand.holding)
        return Moment::State::Holding;
    if (hand.suppressingHold)
        return Moment::State::Suppressed;
    if (hand.touching)
        return Moment::State::Touching;
    return hand.aboveNoise ? Moment::State::AboveNoise : Moment::State::Idle;
}

std::size_t strongestGroupOf(const VirtualPixels& groups) {
    const auto strongest = std::max_element(groups.normalized.begin(), groups.normalized.begin() + kGroupCount);
    return static_cast<std::size_t>(strongest - groups.normalized.begin());
}

} // namespace

Observation::Observation(std::uint64_t bound) : _bound(bound) { _recording.setMaxFrameCount(bound); }

void Observation::add(Frame frame) {
    if (frame.type == Frame::Type::Metadata)
        return;
    if (frame.type == Frame::Type::InputReport) {
        if (_reports++ == 0)
            _startNs = _lastNs = frame.timestampNs;
        frame.timestampNs = _lastNs = std::max(frame.timestampNs, _lastNs); // a piped device may say anything
    }
    const LiveRecognition::Seen& seen = _recognition.handle(frame);
    _recording.appendFrame(std::move(frame));
    if (!seen.step)
        return;
    Analysis::Track::Step step = *seen.step;
    step.ns -= _startNs;
    observe(step, seen.gestures);
}

void Observation::observe(const Analysis::Track::Step& step, std::span<const Gesture> gestures) {
    _observer.frame(step, _recognition.algs(), gestures);
    for (Analysis::Touch& touch : _observer.takeEnded())
        _decisions.push_back({.moment = end(), .touch = std::move(touch)});
    keep(momentAt(step));
}

void Observation::keep(const Moment& moment) {
    _moments.push_back(moment);
    if (_bound == 0)
        return;
    for (; _moments.size() > 2 * _bound; ++_forgotten)
        _moments.pop_front();
    while (_decisions.size() > kMostDecisions)
        _decisions.pop_front();
}

Moment Observation::momentAt(const Analysis::Track::Step& step) const {
    const Algs& algs = _recognition.algs();
    const HandStats& hand = algs.handStats;
    const std::size_t group = strongestGroupOf(algs.virtualPixels);
    Moment moment{.time = HostTime(step.ns),
                  .image = step.image,
                  .isReset = step.kind == Analysis::Track::Step::Kind::Reset,
                  .strongestGroup = algs.virtualPixels.names[group],
                  .groupValue = algs.virtualPixels.value[group],
                  .isGroupOn = algs.virtualPixels.on[group] != 0,
                  .state = stateOf(hand),
                  .touchScore = hand.touchScore,
                  .touchScoreLimit = hand.touchScoreLimit,
                  .holdScoreThreshold = hand.holdScoreThreshold,
                  .activationThreshold = hand.activationThreshold,
                  .holdTimeoutMs = hand.holdTimeoutMs,
                  .contact = {},
                  .reports = _reports,
                  .gaps = _recognition.gaps(),
                  .resets = _recognition.resets(),
                  .invalidReports = _recognition.invalidReports()};
    for (std::size_t i = 0; i < kPadCount; ++i)
        moment.pads[i] = {.value = algs.pixels.value[i], .isOn = algs.pixels.on[i] != 0};
    if (const Analysis::Touch* touch = _observer.inProgress())
        moment.contact = {.number = touch->number,
                          .elapsedMs = elapsedMs(moment.image.timestampMs, hand.touchStartTime),
                          .region = hand.activeRegion,
                          .peak = touch->peak};
    return moment;
}

std::optional<double> Observation::rateHz(std::size_t number) const {
    constexpr HostTime kSpan = std::chrono::seconds(1);
    const auto last = _moments.begin() + static_cast<std::ptrdiff_t>(number - _forgotten);
    const HostTime from = last->time - std::min(last->time, kSpan);
    const auto first = std::lower_bound(_moments.begin(), last, from,
                                        [](const Moment& moment, HostTime time) { return moment.time < time; });
    if (first == last || last->time == first->time)
        return std::nullopt;
    return static_cast<double>(last - first) / Seconds(last->time - first->time).count();
}

} // namespace VeltoTouch::Bench
