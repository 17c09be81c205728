#include "Velto/Analysis/TouchObserver.h"

#include "Plugin/Reports/Regions.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>
#include <utility>

namespace VeltoTouch::Analysis {
namespace {

// Returns the name of the first pixel that `isWanted(bank, index)` picks, a pad's letter or a group's name; pads come
// before groups. Empty if it picks none.
template <class IsWanted>
std::string_view pixelWith(const Algs& algs, IsWanted isWanted) {
    for (std::size_t i = 0; i < kPadCount; ++i) {
        if (isWanted(algs.pixels, i))
            return letterOf(i);
    }
    for (std::size_t i = 0; i < kGroupCount; ++i) {
        if (isWanted(algs.virtualPixels, i))
            return algs.virtualPixels.names[i];
    }
    return {};
}

// The region was just decided by the recognizer; what would it have decided without the last gesture?
MovedBy movedBy(const Algs& algs, std::uint32_t timeMs) {
    const HandStats& hand = algs.handStats;
    if (hand.wasHolding)
        return MovedBy::HoldMoved;
    const PixelRegion ofPeak = regionOfPad(hand.peakPixel);
    if (hand.activeRegion == ofPeak)
        return MovedBy::PeakPad;
    HandStats alone = hand;
    alone.eventRegion = ofPeak;
    const bool isAlone = alone.updateActiveRegion(algs.pixels, algs.virtualPixels, timeMs) == hand.activeRegion;
    return isAlone ? MovedBy::PadK : MovedBy::LastGestureBias;
}

bool hasEvent(const Touch& touch, GestureKind kind) {
    return std::ranges::find(touch.events, kind, &TouchEvent::kind) != touch.events.end();
}

Outcome outcomeOf(const Touch& touch, bool isEnded) {
    if (hasEvent(touch, GestureKind::HoldStart))
        return Outcome::Hold;
    if (hasEvent(touch, GestureKind::Tap))
        return Outcome::Tap;
    return isEnded ? Outcome::Cancel : Outcome::Unfinished;
}

// A value that is not a number passes, as it does in the recognizer.
std::array<Check, 5> tapChecksOf(const HandStats& hand) {
    const auto check = [](Rule rule, auto value, bool isRejected) {
        return Check{.rule = rule, .value = static_cast<double>(value), .bound = 0, .passed = !isRejected};
    };
    return {check(Rule::SignalPerTouchDuration, hand.signalPerTouchDuration, hand.signalPerTouchDuration <= 0.0F),
            check(Rule::SignalPerDuration, hand.signalPerDuration, hand.signalPerDuration < 0.0F),
            check(Rule::NonActivePixels, hand.nonActivePixels, hand.nonActivePixels < 0),
            check(Rule::TimeDurationRatio, hand.timeDurationRatio, hand.timeDurationRatio < 0.0F),
            check(Rule::TapScore, hand.tapSVMScore, hand.tapSVMScore < 0.0F)};
}

// Of the event that decided, if there was one.
PixelRegion decidedRegion(const Touch& touch, PixelRegion last) {
    const GestureKind decides = touch.outcome == Outcome::Hold ? GestureKind::HoldStart : GestureKind::Tap;
    const auto event = std::ranges::find(touch.events, decides, &TouchEvent::kind);
    return event == touch.events.end() ? last : event->region.value_or(PixelRegion::None);
}

} // namespace

void TouchObserver::frame(const Track::Step& step, const Algs& algs, std::span<const Gesture> gestures) {
    const HandStats& hand = algs.handStats;
    if (_contributions == Contributions::Follow)
        _score.add(algs);
    if (hand.touching && !_isTouching)
        begin(step, algs);
    if (_isTouching) {
        addGestures(step, gestures);
        if (hand.touching)
            follow(step, algs);
        else
            end(step, algs);
    }
    if (!hand.touching)
        _troughs = {.pads = algs.pixels.offTrough, .groups = algs.virtualPixels.offTrough};
    _lastStep = step;
}

void TouchObserver::begin(const Track::Step& step, const Algs& algs) {
    _isTouching = true;
    _touch = {.number = ++_begun, .startNs = step.ns, .startFrame = step.image.frameNumber};
    const HandStats& hand = algs.handStats;
    _touch.inForce = {.holdTimeoutMs = hand.holdTimeoutMs,
                      .activationThreshold = hand.activationThreshold,
                      .enableHoldSuppression = hand.enableHoldSuppression,
                      .enableTapSuppression = hand.enableTapSuppression};
    _handPeak = 0;
    _peak = 0;
    _touchScore.reset();
    _isHoldScore = false;
    const float threshold = hand.activationThreshold;
    const auto addActivation = [&](const auto& bank, const auto& troughs) {
        const auto first = std::ranges::find(bank.on, 1);
        if (first == bank.on.end())
            return false;
        const auto i = static_cast<std::size_t>(first - bank.on.begin());
        _touch.checks.push_back({.rule = Rule::Activation,
                                 .value = static_cast<double>(bank.value[i]),
                                 .bound = static_cast<double>(Pixel::activationLevel(troughs[i]) * threshold),
                                 .passed = true});
        return true;
    };
    if (!addActivation(algs.pixels, _troughs.pads))
        addActivation(algs.virtualPixels, _troughs.groups);
}

void TouchObserver::addGestures(const Track::Step& step, std::span<const Gesture> gestures) {
    for (const Gesture& gesture : gestures)
        _touch.events.push_back({.ns = step.ns, .kind = gesture.kind, .region = gesture.region});
}

void TouchObserver::follow(const Track::Step& step, const Algs& algs) {
    const HandStats& hand = algs.handStats;
    if (_touch.path.empty() || _touch.path.back().region != hand.activeRegion)
        _touch.path.push_back(
            {.ns = step.ns, .region = hand.activeRegion, .by = movedBy(algs, step.image.timestampMs)});
    if (hand.peakValue != _handPeak)
        followPeak(algs);
    followTimeout(step, hand);
}

void TouchObserver::followPeak(const Algs& algs) {
    _handPeak = algs.handStats.peakValue;
    if (!(_handPeak > _peak))
        return;
    _peak = _handPeak;
    _touch.peak = {
        .pixel = pixelWith(
            algs, [this](const auto& bank, std::size_t i) { return bank.on[i] != 0 && bank.normalized[i] == _peak; }),
        .value = _peak * algs.handStats.activationThreshold};
}

void TouchObserver::followTimeout(const Track::Step& step, const HandStats& hand) {
    const std::uint32_t elapsed = elapsedMs(step.image.timestampMs, hand.touchStartTime);
    if (hand.wasHolding && !hand.holding)
        _touch.endedBy = elapsed > _timeoutMs ? Touch::EndedBy::Setting : Touch::EndedBy::Clock;
    const bool isScoreLow = hand.enableHoldSuppression && hand.touchScore < hand.holdScoreThreshold;
    if (!isScoreLow)
        _touch.latestHoldMs = std::max(elapsed, _touch.latestHoldMs.value_or(0));
    _elapsedMs = elapsed;
    _timeoutMs = hand.holdTimeoutMs;
    _isScoreAsked = elapsed > hand.holdTimeoutMs && hand.enableHoldSuppression;
    if (!_isScoreAsked || hand.wasHolding || _isHoldScore)
        return;
    _isHoldScore = hand.holding;
    if (_touchScore && !_isHoldScore && !(static_cast<double>(hand.touchScore) > _touchScore->value))
        return;
    _touchScore =
        Check{.rule = Rule::TouchScore,
              .value = static_cast<double>(hand.touchScore),
              .bound = static_cast<double>(hand.holdScoreThreshold),
              .passed = hand.holding,
              .contributions = _contributions == Contributions::Follow ? _score.byRank() : std::vector<float>()};
}

void TouchObserver::end(const Track::Step& step, const Algs& algs) {
    const HandStats& hand = algs.handStats;
    _touch.endNs = step.ns;
    _touch.endFrame = step.image.frameNumber;
    _touch.isCutByReset = step.kind == Track::Step::Kind::Reset;
    _touch.outcome = outcomeOf(_touch, true);
    _touch.region = decidedRegion(_touch, hand.activeRegion);
    addForkChecks();
    const bool isTimedOut = _elapsedMs > _timeoutMs;
    const bool isStale = !isTimedOut && hand.wasHoldTimedOut;
    if (isStale) // the flag is 1, and nothing passes it
        _touch.checks.push_back({.rule = Rule::StaleTimeout, .value = 1, .bound = 1, .passed = false});
    if (hand.enableTapSuppression && !hand.wasHolding && (isStale || !hand.wasHoldTimedOut))
        addTapChecks(hand, isStale);
    _touches.push_back(std::move(_touch));
    _isTouching = false;
    _score.clear();
}

void TouchObserver::addForkChecks() {
    _touch.checks.push_back({.rule = Rule::HoldTimeout,
                             .value = static_cast<double>(_elapsedMs),
                             .bound = static_cast<double>(_timeoutMs)});
    if (_touchScore && (_isHoldScore || _isScoreAsked))
        _touch.checks.push_back(*_touchScore);
}

// Behind a flag that was left no tap rule is asked; but without it they would be, and the reason would be half of it.
void TouchObserver::addTapChecks(const HandStats& hand, bool onlyIfOneFails) {
    std::array<Check, 5> checks = tapChecksOf(hand);
    const bool isRejected = std::ranges::find(checks, std::optional(false), &Check::passed) != checks.end();
    if (onlyIfOneFails && !isRejected)
        return;
    if (_contributions == Contributions::Follow)
        checks.back().contributions = tapScoreContributions(hand);
    std::ranges::move(checks, std::back_inserter(_touch.checks));
}

std::vector<Touch> TouchObserver::finish() {
    if (_isTouching) {
        _touch.endNs = _lastStep.ns;
        _touch.endFrame = _lastStep.image.frameNumber;
        _touch.outcome = outcomeOf(_touch, false);
        _touch.region = decidedRegion(_touch, _touch.path.back().region);
        addForkChecks();
        _touches.push_back(std::move(_touch));
        _isTouching = false;
    }
    return std::exchange(_touches, {});
}

std::vector<Touch> touchesOf(const Track& track, const std::vector<Setting>& settings,
                             TouchObserver::Contributions contributions) {
    TouchObserver observer(contributions);
    track.play(settings, [&observer](const Track::Step& step, const Algs& algs, std::span<const Gesture> gestures) {
        observer.frame(step, algs, gestures);
    });
    return observer.finish();
}

} // namespace VeltoTouch::Analysis
