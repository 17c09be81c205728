#include "Tests/Support/TouchFixture.h"

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;

class GestureTest : public TouchTest {};

TEST_F(GestureTest, ContactsBecomeTapsHoldsAndCancels) {
    surface.at(1000).finger(VolumeUp).forMs(80).lift();                          // frames 0 to 8
    surface.finger(VolumeDown).forMs(600).press({{'E', 200}}).forMs(100).lift(); // 9 to 79
    surface.brush(PlayPause).forMs(450).lift();                                  // 80 to 125
    EXPECT_THAT(surface.events(),
                ElementsAre(MayBegin(VolumeUp).atFrame(0), Tap(VolumeUp).atFrame(8), MayBegin(VolumeDown).atFrame(9),
                            HoldStart(VolumeDown).atFrame(60), HoldChange(PlayPause).atFrame(69),
                            HoldEnd(PlayPause).atFrame(79), MayBegin(PlayPause).atFrame(80), Cancel().atFrame(125)));
    for (const Ref<HIDEvent>& event : surface.events()) {
        EXPECT_EQ(IOHIDEventGetFloatValue(event.get(), kIOHIDEventFieldDigitizerX), 0.0);
        EXPECT_EQ(IOHIDEventGetIntegerValue(event.get(), kIOHIDEventFieldDigitizerTransducerType), 2);
    }
}

TEST_F(GestureTest, TouchBecomesAHoldWhenItOutlastsTheTimeout) {
    for (const std::uint32_t start : {1000U, 4294967000U}) { // the second wraps
        TouchSurface fresh;
        fresh.finger(VolumeDown).at(start).forFrames(1).at(start + 500).forFrames(1);
        EXPECT_THAT(fresh.events(), ElementsAre(MayBegin(VolumeDown))) << start;
        fresh.at(start + 501).forFrames(2).lift();
        EXPECT_THAT(fresh.events(),
                    ElementsAre(MayBegin(VolumeDown), HoldStart(VolumeDown).atFrame(2), HoldEnd(VolumeDown).atFrame(4)))
            << start;
    }
}

TEST_F(GestureTest, TimeoutIsJudgedOnlyWhileTouching) {
    surface.set("EnableTapSuppression", false).at(1000).finger(PlayPause).forMs(500).at(1700).lift();
    EXPECT_THAT(surface.events(), ElementsAre(MayBegin(PlayPause), Tap(PlayPause)));
}

TEST_F(GestureTest, HoldEndIsTheOnlyEventOfItsFrame) {
    // Without hold suppression a hold's end has the flags of a tap, too.
    surface.set("EnableHoldSuppression", false).set("EnableTapSuppression", false);
    surface.at(1000).finger(VolumeUp).forMs(600).lift().idle();
    EXPECT_THAT(surface.events(), ElementsAre(MayBegin(VolumeUp), HoldStart(VolumeUp), HoldEnd(VolumeUp)));
}

// A weak contact that lasts 600 ms, with hold suppression set before, and set again after the first 550 ms.
TEST_F(GestureTest, HoldSuppressionCanBeSwitchedDuringATouch) {
    struct Row {
        const char* name;
        bool before, after;
        testing::Matcher<HIDEvents> events;
    };
    const GestureMatcher begin = MayBegin(VolumeUp);
    const GestureMatcher end = HoldEnd(VolumeUp).atFrame(60);
    for (const Row& row : {
             Row{"on", true, true, ElementsAre(begin, Cancel().atFrame(60))},
             Row{"off", false, false, ElementsAre(begin, HoldStart(VolumeUp).atFrame(51), end)},
             Row{"switched off", true, false, ElementsAre(begin, HoldStart(VolumeUp).atFrame(55), end)},
             Row{"switched on: a hold that has begun goes on", false, true,
                 ElementsAre(begin, HoldStart(VolumeUp).atFrame(51), end)},
         }) {
        TouchSurface fresh;
        fresh.set("EnableHoldSuppression", row.before).at(1000).brush(VolumeUp).forMs(550);
        fresh.set("EnableHoldSuppression", row.after).forMs(50).lift();
        EXPECT_THAT(fresh.events(), row.events) << row.name;
    }
}

TEST_F(GestureTest, HoldEndedByALongerTimeoutIsNotCancelledToo) {
    surface.at(1000).finger(VolumeDown).forMs(600).set("HoldTimeoutMilliseconds", 5000).forMs(100).lift();
    EXPECT_THAT(surface.events(),
                ElementsAre(MayBegin(VolumeDown), HoldStart(VolumeDown), HoldEnd(VolumeDown).atFrame(60)));
}

TEST_F(GestureTest, SuppressionSwitchedOffInASuppressedHoldLeavesItsTimeout) {
    surface.at(1000).brush(PlayPause).forMs(550).set("EnableHoldSuppression", false).lift();
    surface.at(5000).finger(PlayPause).forMs(80).lift();
    EXPECT_THAT(surface.events(), ElementsAre(MayBegin(PlayPause), Cancel(), MayBegin(PlayPause), Cancel()))
        << "flags that nothing clears keep the next touch from being a tap";
    surface.set("EnableHoldSuppression", true).at(8000).idle().finger(PlayPause).forMs(80).lift();
    EXPECT_THAT(surface.events().back(), Tap(PlayPause));
}

// A contact too weak for its 450 ms.
TEST_F(GestureTest, TapSuppressionIsReadWhenTheFingerLifts) {
    for (const auto& [before, after] : {std::pair{true, true}, {false, false}, {true, false}, {false, true}}) {
        TouchSurface fresh;
        fresh.set("EnableTapSuppression", before).at(1000).brush(VolumeDown).forMs(400);
        fresh.set("EnableTapSuppression", after).forMs(50).lift().idle();
        EXPECT_THAT(fresh.events(), ElementsAre(MayBegin(VolumeDown), after ? Cancel() : Tap(VolumeDown))) << before;
    }
}

TEST_F(GestureTest, OnlyTapsAndHoldEndsAreRememberedAsGestures) {
    surface.at(1000).finger(VolumeUp).forMs(80).lift();
    surface.at(3000).brush(PlayPause).forMs(450).lift();
    EXPECT_EQ(surface.hand.eventRegion, VolumeUp);
    EXPECT_EQ(surface.hand.lastEventTime, 1080U);
    surface.at(5000).finger(VolumeDown).forMs(600).lift();
    EXPECT_EQ(surface.hand.eventRegion, VolumeDown);
    EXPECT_EQ(surface.hand.lastEventTime, 5600U);
}

TEST_F(GestureTest, FirmwareResetEndsATouchAtTimeZero) {
    surface.at(1000).finger(VolumeDown).forMs(600).reset();
    EXPECT_THAT(surface.events(), ElementsAre(MayBegin(VolumeDown), HoldStart(VolumeDown),
                                              HoldEnd(VolumeDown).atFrame(0), FirmwareReset()));
    EXPECT_EQ(surface.hand.touchEndTime, 0U);
    EXPECT_EQ(surface.hand.touchScore, 0.0F);

    TouchSurface tapped; // at time 0 its duration would not be a tap's
    tapped.set("EnableTapSuppression", false).at(1000).finger(VolumeDown).forMs(80).reset();
    EXPECT_THAT(tapped.events(), ElementsAre(MayBegin(VolumeDown), Tap(VolumeDown).atFrame(0), FirmwareReset()));
}

} // namespace
} // namespace VeltoTouch::Tests
