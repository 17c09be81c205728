#include "Tests/Stories/Touches.h"

#include "Platform/JSON.h"
#include "Plugin/Pipeline/Pipeline.h"
#include "Tests/Stories/Values.h"
#include "Tests/Support/Frames.h"
#include "Tests/Support/Reports.h"
#include "Velto/Analysis/Pairing.h"
#include "Velto/Analysis/Replay.h"
#include "Velto/Analysis/TouchObserver.h"
#include "Velto/Analysis/WouldBe.h"

#include <algorithm>
#include <limits>

#include <fmt/format.h>

namespace VeltoTouch::Tests {
namespace {

using namespace Analysis;

// What a story leaves in a recording.
std::list<Frame> framesOf(const Story& story) {
    std::list<Frame> frames;
    const auto now = [&frames] { return kStoryStepNs * frames.size(); };
    for (const Step& step : story.steps) {
        if (const auto* images = std::get_if<Steps::Images>(&step)) {
            InputReport::Image image = makeImage(images->frame, images->timeMs, {});
            image.padSignal = images->signals;
            for (std::uint32_t i = 0; i < images->count; ++i) {
                frames.push_back(reportFrame(imageReport(image), now()));
                image.frameNumber += images->frameStep;
                image.timestampMs += images->timeStepMs;
            }
        } else if (const auto* report = std::get_if<Steps::Report>(&step)) {
            frames.push_back(reportFrame(report->bytes, now()));
        } else if (const auto* written = std::get_if<Steps::Setting>(&step)) {
            frames.push_back(setting(written->key, valueOf(written->value), now()));
        }
    }
    return frames;
}

bool isFailed(const Touch& touch, std::initializer_list<Rule> rules) {
    return std::ranges::any_of(touch.checks, [&](const Check& check) {
        return check.passed == false && std::ranges::find(rules, check.rule) != rules.end();
    });
}

using Events = std::vector<TouchEvent>;

// The gestures of a recording in front of a real pipeline. Where `turned` is given, the checks of this touch that
// failed, and no others, are turned round while it lasts.
Events eventsOf(const std::list<Frame>& frames, const Touch* turned) {
    Pipeline pipeline;
    HandStats& hand = pipeline.algs.handStats;
    Events events;
    pipeline.hidEventsHandler = [&events](std::uint64_t time, const HIDEvents& batch) {
        for (const Ref<HIDEvent>& event : batch) {
            if (const auto gesture = gestureOf(*event); gesture && gesture->kind != GestureKind::FirmwareReset)
                events.push_back({.ns = time, .kind = gesture->kind, .region = gesture->region});
        }
    };
    const auto turn = [&](std::uint64_t ns) {
        const bool isInTouch = ns >= turned->startNs && ns <= turned->endNs;
        const bool isScoreTurned = isInTouch && isFailed(*turned, {Rule::TouchScore});
        hand.holdScoreThreshold = isScoreTurned ? -std::numeric_limits<float>::infinity() : 0.0F;
        if (ns == turned->endNs && isFailed(*turned, {Rule::StaleTimeout}))
            hand.holdTimedOut = false;
        if (ns == turned->endNs && isFailed(*turned, {Rule::SignalPerTouchDuration, Rule::SignalPerDuration,
                                                      Rule::NonActivePixels, Rule::TimeDurationRatio, Rule::TapScore}))
            hand.enableTapSuppression = false;
    };
    for (const Frame& frame : frames) {
        if (turned != nullptr)
            turn(frame.timestampNs);
        if (frame.type == Frame::Type::State)
            pipeline.setState(frame.timestampNs, frame.key, frame.value);
        else
            pipeline.handleInputReport(frame.timestampNs, frame.report.data(), frame.report.size());
    }
    return events;
}

bool isSame(const TouchEvent& a, const TouchEvent& b) {
    return a.ns == b.ns && a.kind == b.kind && a.region == b.region;
}

bool hasGesture(const Events& events, const Touch& touch) {
    return std::ranges::any_of(events, [&touch](const TouchEvent& event) {
        return event.ns >= touch.startNs && event.ns <= touch.endNs &&
               (event.kind == GestureKind::Tap || event.kind == GestureKind::HoldStart);
    });
}

// All events of touches.
Events eventsOf(const std::vector<Touch>& touches) {
    Events events;
    for (const Touch& touch : touches)
        events.insert(events.end(), touch.events.begin(), touch.events.end());
    return events;
}

// What a user sees of a recording with a setting.
Events replayed(const std::list<Frame>& frames, const Setting& setting) {
    PipelineRecording recording;
    for (const Frame& frame : frames)
        recording.appendFrame(frame);
    Events events;
    Replay replay;
    replay.gestureHandler = [&events](const Gesture& gesture) {
        if (gesture.kind != GestureKind::FirmwareReset)
            events.push_back({.ns = gesture.time.count(), .kind = gesture.kind, .region = gesture.region});
    };
    replay.play(recording, {setting}, Replay::kMaxSpeed);
    return events;
}

std::string faultOf(const Touch& touch) {
    if (isGesture(touch) != hasGesture(touch.events, touch))
        return "outcome and events differ";
    if ((touch.outcome == Analysis::Outcome::Cancel) != touch.reason().has_value())
        return "a reason where there is none, or none where there is one";
    return {};
}

std::string faultOfAlternatives(const std::list<Frame>& frames, const Track& track, Touch& touch) {
    findAlternatives(track, {}, {&touch});
    for (const Alternative& alternative : touch.wouldBe) {
        const std::vector<Touch> touches = touchesOf(track, {alternative.setting});
        const Touch* const same = touchThatOverlapsMost(touches, touch.startNs, touch.endNs);
        const auto found = same == nullptr ? std::optional<Analysis::Outcome>() : same->outcome;
        if (found != alternative.outcome || found == touch.outcome ||
            !std::ranges::equal(eventsOf(touches), replayed(frames, alternative.setting), isSame))
            return fmt::format("{}={} gives another outcome", alternative.setting.key,
                               JSON::text(alternative.setting.value.get()));
    }
    return {};
}

} // namespace

TouchesCheck checkTouches(const Story& story, std::size_t mostAlternatives) {
    TouchesCheck check;
    const std::list<Frame> frames = framesOf(story);
    const Track track(frames);
    std::vector<Touch> touches = touchesOf(track, {});
    if (!std::ranges::equal(eventsOf(touches), eventsOf(frames, nullptr), isSame))
        check.fault = "touches have other events than the pipeline";
    for (Touch& touch : touches) {
        std::string fault = faultOf(touch);
        if (fault.empty() && touch.outcome == Analysis::Outcome::Cancel) {
            ++check.cancels;
            if (!hasGesture(eventsOf(frames, &touch), touch))
                fault = "no gesture, although every failed check was turned round";
        }
        if (fault.empty() && touch.number <= mostAlternatives)
            fault = faultOfAlternatives(frames, track, touch);
        if (!fault.empty())
            check.fault = fmt::format("touch {}: {}", touch.number, fault);
    }
    return check;
}

} // namespace VeltoTouch::Tests
