#include "Velto/Analysis/Score.h"

#include "Velto/Analysis/NearestRank.h"
#include "Velto/Analysis/Pairing.h"

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

LabelScore labelScoreOf(const Label& label, const Touch* touch) {
    LabelScore score{.label = label.index,
                     .gesture = label.gesture,
                     .region = label.region,
                     .endRegion = label.endRegion,
                     .startNs = label.startNs,
                     .endNs = label.endNs,
                     .result = resultOf(label, touch)};
    if (touch == nullptr)
        return score;
    score.touch = touch->number;
    score.reason = touch->reason();
    if (score.result == Result::Found)
        score.delayMs = delayMsOf(label, *touch);
    else if (score.result == Result::WrongRegion)
        score.movedBy = movedBy(*touch);
    else if (score.result == Result::WrongKind) {
        score.became = touch->outcome;
        score.decidedBy = decisionOn(*touch);
    }
    return score;
}

// What is in the time of a label without a touch: another label has it.
std::optional<LabelScore::Taken> takenFrom(const Label& label, const std::vector<Touch>& touches,
                                           const std::vector<const Label*>& byTouch) {
    const auto touch = std::ranges::lower_bound(touches, label.startNs, {}, &Touch::endNs);
    if (touch == touches.end() || touch->startNs > label.endNs)
        return std::nullopt;
    return LabelScore::Taken{.touch = touch->number,
                             .label = byTouch[static_cast<std::size_t>(touch - touches.begin())]->index};
}

Stray strayOf(const Touch& touch) {
    return {.touch = touch.number,
            .gesture = touch.outcome,
            .region = touch.region,
            .startNs = touch.startNs,
            .endNs = touch.endNs};
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
    const std::vector<const Label*> byTouch = labelsByTouch(labels, touches);
    std::vector<const Touch*> byLabel(labels.size(), nullptr); // of a spoiled one, any
    RecordingScore score;
    for (std::size_t i = 0; i < touches.size(); ++i) {
        if (byTouch[i] != nullptr)
            byLabel[static_cast<std::size_t>(byTouch[i] - labels.data())] = &touches[i];
        else if (isGesture(touches[i]))
            score.strays.push_back(strayOf(touches[i]));
    }
    for (std::size_t i = 0; i < labels.size(); ++i) {
        if (labels[i].isSpoiled())
            continue;
        score.labels.push_back(labelScoreOf(labels[i], byLabel[i]));
        if (score.labels.back().result == Result::Missed && byLabel[i] == nullptr)
            score.labels.back().taken = takenFrom(labels[i], touches, byTouch);
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
