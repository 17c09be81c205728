#include "Python/Play.h"

#include "Velto/Analysis/EventLines.h"
#include "Velto/Analysis/Pairing.h"
#include "Velto/Analysis/TouchLines.h"
#include "Velto/Analysis/TouchObserver.h"

#include <algorithm>

namespace VeltoTouch::Python {
namespace {

using namespace Analysis;

std::uint8_t numberOf(PixelRegion region) noexcept { return static_cast<std::uint8_t>(region); }

StateRow stateOf(const Track::Step& step, const Algs& algs) {
    const HandStats& hand = algs.handStats;
    StateRow row{.ns = step.ns,
                 .frame = step.image.frameNumber,
                 .timeMs = step.image.timestampMs,
                 .touchScore = hand.touchScore,
                 .classifier = hand.svm.getSVMScore(),
                 .signalPerTouchDuration = hand.signalPerTouchDuration,
                 .signalPerDuration = hand.signalPerDuration,
                 .nonActivePixels = hand.nonActivePixels,
                 .timeDurationRatio = hand.timeDurationRatio,
                 .tapScore = hand.tapSVMScore,
                 .aboveNoise = hand.aboveNoise,
                 .touching = hand.touching,
                 .holding = hand.holding,
                 .suppressingHold = hand.suppressingHold,
                 .holdTimedOut = hand.holdTimedOut,
                 .tapCandidate = hand.tapCandidate,
                 .tapRejected = hand.tapRejected,
                 .tapDetected = hand.tapDetected,
                 .activeRegion = numberOf(hand.activeRegion),
                 .previousRegion = numberOf(hand.previousRegion),
                 .eventRegion = numberOf(hand.eventRegion),
                 .pads = {},
                 .groups = {}};
    std::copy_n(algs.pixels.normalized.begin(), kPadCount, row.pads.begin());
    std::copy_n(algs.virtualPixels.normalized.begin(), kGroupCount, row.groups.begin());
    return row;
}

TapRow tapOf(const Track::Step& step, const HandStats& hand, std::uint64_t touch) {
    return {.touch = touch,
            .endNs = step.ns,
            .signalPerTouchDuration = hand.signalPerTouchDuration,
            .signalPerDuration = hand.signalPerDuration,
            .nonActivePixels = hand.nonActivePixels,
            .timeDurationRatio = hand.timeDurationRatio,
            .tapScore = hand.tapSVMScore,
            .tapRejected = hand.tapRejected};
}

void appendEvents(std::string& text, const std::string& inFile, const Track::Step& step,
                  std::span<const Gesture> gestures) {
    for (const Gesture& gesture : gestures)
        appendEventLine(text, inFile, gesture);
    if (step.kind == Track::Step::Kind::Reset) // the pipeline reports it behind what ended with it
        appendEventLine(text, inFile, {.kind = GestureKind::FirmwareReset, .region = {}, .time = HostTime(step.ns)});
}

std::string touchLines(const Recording& recording, const std::vector<Touch>& touches) {
    const std::vector<Label> labels = Analysis::labelsOf(recording.frames());
    const std::vector<const Label*> labelOf = labelsByTouch(labels, touches);
    const std::string file = recording.name();
    Typicals typicals;
    for (const Touch& touch : touches)
        typicals.add(touch);
    std::string text;
    for (std::size_t i = 0; i < touches.size(); ++i)
        appendTouchLine(text, file, touches[i], labelOf[i], typicals);
    return text;
}

} // namespace

Played play(const Recording& recording, const std::vector<Setting>& settings, bool wantsStates) {
    const Track track(recording.frames());
    const std::string inFile = fileMember(recording.name());
    TouchObserver observer(TouchObserver::Contributions::Follow);
    Played played;
    if (wantsStates) {
        played.states.reserve(track.imageCount());
        played.ranked.reserve(track.imageCount());
    }
    track.play(settings, [&](const Track::Step& step, const Algs& algs, std::span<const Gesture> gestures) {
        observer.frame(step, algs, gestures);
        appendEvents(played.events, inFile, step, gestures);
        if (observer.endedTouches() > played.taps.size())
            played.taps.push_back(tapOf(step, algs.handStats, observer.endedTouches()));
        if (wantsStates && step.kind == Track::Step::Kind::Image) {
            played.states.push_back(stateOf(step, algs));
            played.ranked.push_back(SVM::rankedValues(algs.pixels, algs.virtualPixels));
        }
    });
    played.touches = touchLines(recording, observer.finish());
    return played;
}

} // namespace VeltoTouch::Python
