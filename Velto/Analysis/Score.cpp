#include "Velto/Analysis/Score.h"

#include "Velto/Analysis/NearestRank.h"
#include "Velto/Analysis/Pairing.h"
#include "Velto/Analysis/Spoiled.h"

#include <algorithm>
#include <utility>

namespace VeltoTouch::Analysis {
namespace {

const TouchEvent* firstEvent(const Touch& touch, GestureKind kind) {
    const auto event = std::ranges::find(touch.events, kind, &TouchEvent::kind);
    return event == touch.events.end() ? nullptr : &*event;
}

// The regions of a hold, from its holdStart to its holdEnd, each once where it follows another.
std::vector<std::string_view> holdPath(const Touch& touch) {
    std::vector<std::string_view> path;
    bool isHolding = false;
    for (const TouchEvent& event : touch.events) {
        if (event.kind == GestureKind::HoldStart && !path.empty())
            break; // a second hold of the same touch
        isHolding = isHolding || event.kind == GestureKind::HoldStart;
        const std::string_view region = nameOf(event.region.value_or(PixelRegion::None));
        if (isHolding && (path.empty() || path.back() != region))
            path.push_back(region);
    }
    return path;
}

// Whether a touch of the meant kind went where it was meant to.
bool isInItsRegions(const Label& label, const Touch& touch) {
    if (label.gesture == "tap")
        return nameOf(touch.region) == label.region;
    const std::vector<std::string_view> path = holdPath(touch);
    if (label.gesture == "hold")
        return path.size() == 1 && path.front() == label.region;
    return !path.empty() && path.front() == label.region && path.back() == label.endRegion;
}

std::optional<double> delayMsOf(const Label& label, const Touch& touch) {
    const bool isTap = label.gesture == "tap";
    const TouchEvent* const event = firstEvent(touch, isTap ? GestureKind::Tap : GestureKind::HoldStart);
    if (event == nullptr)
        return std::nullopt;
    const auto from = static_cast<std::int64_t>(isTap ? label.endNs : label.startNs);
    return static_cast<double>(static_cast<std::int64_t>(event->ns) - from) / 1e6;
}

// What made a touch a hold or kept it from being one.
std::optional<Check> decisionOn(const Touch& touch) {
    const auto fork = std::ranges::find(touch.checks, Rule::HoldTimeout, &Check::rule);
    const bool isDecisive =
        fork != touch.checks.end() && (fork->value > fork->bound) == (touch.outcome == Outcome::Hold);
    return isDecisive ? std::optional(*fork) : std::nullopt;
}

// What gave the touch its region when it was decided.
MovedBy movedBy(const Touch& touch) {
    const TouchEvent* const event =
        firstEvent(touch, touch.outcome == Outcome::Tap ? GestureKind::Tap : GestureKind::HoldStart);
    MovedBy by = touch.path.front().by;
    for (const RegionChange& change : touch.path) {
        if (change.ns <= event->ns || touch.outcome == Outcome::Hold) // a hold may move later
            by = change.by;
    }
    return by;
}

bool overlaps(const Label& label, const Touch& touch) noexcept {
    return touch.startNs <= label.endNs && touch.endNs >= label.startNs;
}

} // namespace

Result resultOf(const Label& label, const Touch* touch) {
    const bool isAnything = touch != nullptr && isGesture(*touch);
    if (!label.isMeant())
        return isAnything ? Result::False : Result::Quiet;
    if (!isAnything)
        return Result::Missed;
    const Outcome meant = label.gesture == "tap" ? Outcome::Tap : Outcome::Hold;
    if (touch->outcome != meant)
        return Result::WrongKind;
    return isInItsRegions(label, *touch) ? Result::Found : Result::WrongRegion;
}

RecordingScore scoreOf(const std::vector<Label>& labels, const std::vector<Touch>& touches) {
    RecordingScore score;
    const std::vector<const Touch*> paired = pair(labels, touches);
    std::vector<bool> isLabelled(touches.size(), false);
    for (std::size_t i = 0; i < labels.size(); ++i) {
        const Label& label = labels[i];
        if (label.gesture == kSpoiled) {
            for (const Touch& touch : touches)
                isLabelled[touch.number - 1] = isLabelled[touch.number - 1] || overlaps(label, touch);
            continue;
        }
        LabelScore one{.label = label.index,
                       .gesture = label.gesture,
                       .region = label.region,
                       .endRegion = label.endRegion,
                       .startNs = label.startNs,
                       .endNs = label.endNs,
                       .result = resultOf(label, paired[i])};
        if (const Touch* const touch = paired[i]) {
            isLabelled[touch->number - 1] = true;
            one.touch = touch->number;
            one.reason = touch->reason();
            if (one.result == Result::Found)
                one.delayMs = delayMsOf(label, *touch);
            else if (one.result == Result::WrongRegion)
                one.movedBy = movedBy(*touch);
            else if (one.result == Result::WrongKind) {
                one.became = touch->outcome;
                one.decidedBy = decisionOn(*touch);
            }
        }
        score.labels.push_back(std::move(one));
    }
    for (const Touch& touch : touches) {
        if (!isLabelled[touch.number - 1] && isGesture(touch))
            score.strays.push_back({.touch = touch.number,
                                    .gesture = touch.outcome,
                                    .region = touch.region,
                                    .startNs = touch.startNs,
                                    .endNs = touch.endNs});
    }
    return score;
}

void ScoreTotal::add(const RecordingScore& recording) {
    ++_recordings;
    if (!recording.error.empty()) {
        ++_failed;
        return;
    }
    _durationNs += recording.durationNs;
    _strays += recording.strays.size();
    for (const LabelScore& label : recording.labels)
        add(label);
}

void ScoreTotal::add(const LabelScore& label) {
    _counts.add(label.result);
    _byGesture[label.gesture][label.region].add(label.result);
    if (label.result != Result::Quiet && label.result != Result::False)
        ++_meant;
    if (label.delayMs)
        (label.gesture == "tap" ? _tapDelaysMs : _holdDelaysMs).push_back(*label.delayMs);
}

std::optional<double> ScoreTotal::falsePerHour() const noexcept {
    return _durationNs == 0 ? std::nullopt : std::optional(static_cast<double>(falseGestures()) / hours());
}

double ScoreTotal::recall() const noexcept {
    return _meant == 0 ? 1.0 : static_cast<double>(_counts.of(Result::Found)) / static_cast<double>(_meant);
}

std::optional<ScoreTotal::Delays> ScoreTotal::delaysOf(std::vector<double> delaysMs) {
    if (delaysMs.empty())
        return std::nullopt;
    return Delays{.medianMs = nearestRank(delaysMs, 50), .p95Ms = nearestRank(delaysMs, 95)};
}

} // namespace VeltoTouch::Analysis
