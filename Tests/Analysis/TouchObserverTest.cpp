#include "Velto/Analysis/TouchObserver.h"
#include "Tests/Analysis/RecordedSurface.h"
#include "Velto/Analysis/WeakContacts.h"

#include <limits>

namespace VeltoTouch::Tests {
namespace {

using namespace Analysis;
using enum PixelRegion;

// "cancel touchScore | activation holdTimeout? touchScore!": outcome, reason, and the checks; a failed one has !, a
// fork ?.
std::string textOf(const Touch& touch) {
    std::string text(nameOf(touch.outcome));
    if (const auto reason = touch.reason())
        text.append(" ").append(nameOf(*reason));
    if (touch.isCutByReset)
        text += " reset";
    if (touch.endedBy)
        text.append(" by ").append(nameOf(*touch.endedBy));
    text += " |";
    for (const Check& check : touch.checks)
        text.append(" ").append(nameOf(check.rule)).append(!check.passed ? "?" : *check.passed ? "" : "!");
    return text;
}

std::string textOf(const std::vector<Touch>& touches) {
    std::string text;
    for (const Touch& touch : touches)
        text += textOf(touch) + "\n";
    return text;
}

struct TouchRow {
    const char* name;
    std::function<void(TouchSurface& surface)> story;
    const char* touches;
};

class TouchObserverTest : public RecordedSurfaceTest, public testing::WithParamInterface<TouchRow> {};

#define TAP_RULES "signalPerTouchDuration signalPerDuration nonActivePixels timeDurationRatio tapScore"

const TouchRow kTouchRows[]{
    {"Tap", [](TouchSurface& s) { s.at(1000).idle().finger(PlayPause).forMs(80).lift(); },
     "tap | activation holdTimeout? " TAP_RULES "\n"},
    {"Hold", [](TouchSurface& s) { s.at(1000).idle().finger(VolumeUp).forMs(700).lift(); },
     "hold | activation holdTimeout? touchScore\n"},
    {"WeakForItsTime", [](TouchSurface& s) { s.at(1000).idle().brush(VolumeUp).forMs(450).lift(); },
     "cancel signalPerTouchDuration | activation holdTimeout? signalPerTouchDuration! signalPerDuration! "
     "nonActivePixels timeDurationRatio tapScore\n"},
    {"LowScore", [](TouchSurface& s) { s.at(1000).idle().brush(VolumeUp).forMs(700).lift(); },
     "cancel touchScore | activation holdTimeout? touchScore!\n"},
    {"TapSuppressionOff",
     [](TouchSurface& s) { s.set("EnableTapSuppression", false).at(1000).idle().brush(VolumeUp).forMs(450).lift(); },
     "tap | activation holdTimeout?\n"},
    {"HoldSuppressionOff",
     [](TouchSurface& s) { s.set("EnableHoldSuppression", false).at(1000).idle().brush(VolumeUp).forMs(700).lift(); },
     "hold | activation holdTimeout?\n"},
    {"FlagLeftByThisTouch",
     [](TouchSurface& s) {
         s.at(1000).idle().brush(VolumeUp).forMs(700).set("EnableHoldSuppression", false);
         s.set("HoldTimeoutMilliseconds", std::int64_t{5000}).forMs(20).lift();
     },
     "cancel staleTimeout | activation holdTimeout? staleTimeout! signalPerTouchDuration! signalPerDuration! "
     "nonActivePixels timeDurationRatio tapScore\n"},
    {"FlagLeftByAnEarlierTouch",
     [](TouchSurface& s) {
         s.at(1000).idle().brush(VolumeUp).forMs(700).set("EnableHoldSuppression", false);
         s.set("HoldTimeoutMilliseconds", std::int64_t{5000}).forMs(20).lift();
         s.idle().finger(PlayPause).forMs(80).lift();
     },
     "cancel staleTimeout | activation holdTimeout? staleTimeout! signalPerTouchDuration! signalPerDuration! "
     "nonActivePixels timeDurationRatio tapScore\n"
     "cancel staleTimeout | activation holdTimeout? staleTimeout!\n"},
    {"RaisedTimeoutEndsAHold",
     [](TouchSurface& s) {
         s.at(1000).idle().finger(PlayPause).forMs(700).set("HoldTimeoutMilliseconds", std::int64_t{2000});
         s.forMs(100).lift();
     },
     "hold by setting | activation holdTimeout? touchScore signalPerTouchDuration! signalPerDuration "
     "nonActivePixels timeDurationRatio tapScore\n"},
    {"SteppedClockEndsAHold",
     [](TouchSurface& s) { s.at(1000).idle().finger(PlayPause).forMs(700).at(1100).forMs(100).lift(); },
     "hold by clock | activation holdTimeout? touchScore " TAP_RULES "\n"},
    {"Reset", [](TouchSurface& s) { s.at(1000).idle().finger(PlayPause).forMs(80).reset(); },
     "cancel signalPerTouchDuration reset | activation holdTimeout? signalPerTouchDuration! signalPerDuration "
     "nonActivePixels timeDurationRatio tapScore!\n"},
    {"ClockWraps", [](TouchSurface& s) { s.at(0xFFFFFFE0).idle().finger(PlayPause).forMs(80).lift(); },
     "tap | activation holdTimeout? " TAP_RULES "\n"},
    {"ThresholdZero",
     [](TouchSurface& s) { s.set("ActivationThreshold", 0.0).at(1000).idle().finger(PlayPause).forMs(80).lift(); },
     "tap | activation holdTimeout? " TAP_RULES "\n"},
    {"ThresholdNegative",
     [](TouchSurface& s) {
         s.set("ActivationThreshold", -5.0).at(1000).idle().press({{'E', -50}}).forMs(80).lift();
     },
     "cancel signalPerTouchDuration | activation holdTimeout? signalPerTouchDuration! signalPerDuration! "
     "nonActivePixels timeDurationRatio! tapScore\n"},
    {"ThresholdInfinite",
     [](TouchSurface& s) {
         s.set("ActivationThreshold", std::numeric_limits<double>::infinity()).at(1000).idle();
         s.finger(PlayPause).forMs(80).lift();
     },
     ""},
    {"Unfinished", [](TouchSurface& s) { s.at(1000).idle().finger(PlayPause).forMs(80); },
     "unfinished | activation holdTimeout?\n"},
};

TEST_P(TouchObserverTest, SaysWhy) {
    GetParam().story(surface);
    EXPECT_EQ(GetParam().touches, textOf(touchesOf(track(), {})));
}
INSTANTIATE_TEST_SUITE_P(Stories, TouchObserverTest, testing::ValuesIn(kTouchRows),
                         [](const auto& row) { return row.param.name; });

} // namespace
} // namespace VeltoTouch::Tests
