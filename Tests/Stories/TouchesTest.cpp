#include "Plugin/Pipeline/Pipeline.h"
#include "Tests/Stories/Teller.h"
#include "Tests/Stories/Values.h"
#include "Tests/Support/Frames.h"
#include "Tests/Support/Reports.h"
#include "Velto/Analysis/TouchObserver.h"

#include <algorithm>
#include <limits>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

using namespace Analysis;

constexpr int kStories = 300;
constexpr std::uint64_t kStepNs = 10'000'000;

// What a story leaves in a recording.
std::list<Frame> framesOf(const Story& story) {
    std::list<Frame> frames;
    const auto now = [&frames] { return kStepNs * frames.size(); };
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

// Every event belongs to a touch; outcome and events agree; and were every failed check of a touch turned round, it
// would have been a gesture.
TEST(TouchesOfStoriesTest, HaveTrueReasons) {
    int cancels = 0;
    for (std::uint64_t seed = 1; seed <= kStories; ++seed) {
        Choices choices(seed);
        const std::list<Frame> frames = framesOf(tellStory(choices, 60, seed % 3 == 0 ? 60 : 4));
        const std::vector<Touch> touches = touchesOf(Track(frames), {});
        Events events;
        for (const Touch& touch : touches) {
            events.insert(events.end(), touch.events.begin(), touch.events.end());
            const bool isGesture = touch.outcome == Outcome::Tap || touch.outcome == Outcome::Hold;
            ASSERT_EQ(isGesture, hasGesture(touch.events, touch)) << "seed " << seed << ", touch " << touch.number;
            ASSERT_EQ(touch.outcome == Outcome::Cancel, touch.reason().has_value())
                << "seed " << seed << ", touch " << touch.number;
            if (touch.outcome != Outcome::Cancel)
                continue;
            ++cancels;
            ASSERT_TRUE(hasGesture(eventsOf(frames, &touch), touch)) << "seed " << seed << ", touch " << touch.number;
        }
        ASSERT_TRUE(std::ranges::equal(events, eventsOf(frames, nullptr), isSame)) << "seed " << seed;
    }
    EXPECT_GT(cancels, kStories); // there was something to turn
}

} // namespace
} // namespace VeltoTouch::Tests
