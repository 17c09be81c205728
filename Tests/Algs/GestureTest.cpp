#include "Tests/Support/TouchFixture.h"

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;

class GestureTest : public TouchTest {};

TEST_F(GestureTest, ContactsBecomeTapsHoldsAndCancels) {
    surface.at(1000).finger(VolumeUp).forMs(80).lift();                          // frames 0 to 8
    surface.finger(VolumeDown).forMs(600).press({{'E', 200}}).forMs(100).lift(); // 9 to 79
    EXPECT_EQ(surface.hand.eventRegion, PlayPause);
    surface.brush(VolumeDown).forMs(450).lift(); // 80 to 125
    EXPECT_THAT(surface.events(),
                ElementsAre(MayBegin(VolumeUp).atFrame(0), Tap(VolumeUp).atFrame(8), MayBegin(VolumeDown).atFrame(9),
                            HoldStart(VolumeDown).atFrame(60), HoldChange(PlayPause).atFrame(69),
                            HoldEnd(PlayPause).atFrame(79), MayBegin(VolumeDown).atFrame(80), Cancel().atFrame(125)));
    for (const Ref<HIDEvent>& event : surface.events()) {
        EXPECT_EQ(IOHIDEventGetFloatValue(event.get(), kIOHIDEventFieldDigitizerX), 0.0);
        EXPECT_EQ(IOHIDEventGetIntegerValue(event.get(), kIOHIDEventFieldDigitizerTransducerType), 2);
    }
    EXPECT_EQ(surface.hand.eventRegion, PlayPause) << "a cancelled contact is not remembered as a gesture";
    EXPECT_EQ(surface.hand.lastEventTime, 1790U);
    surface.finger(VolumeUp).forMs(80).lift();
    EXPECT_EQ(surface.hand.eventRegion, VolumeUp);
    EXPECT_EQ(surface.hand.lastEventTime, 2340U);
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
    surface.set("EnableTapSuppression", false).at(1000).finger(PlayPause).forMs(500).at(1700).lift();
    EXPECT_THAT(surface.events(), ElementsAre(MayBegin(PlayPause), Tap(PlayPause))) << "judged only while touching";
}

TEST_F(GestureTest, HoldEndIsTheOnlyEventOfItsFrame) {
    // Without hold suppression a hold's end has the flags of a tap, too.
    surface.set("EnableHoldSuppression", false).set("EnableTapSuppression", false);
    surface.at(1000).finger(VolumeUp).forMs(600).lift().idle();
    EXPECT_THAT(surface.events(), ElementsAre(MayBegin(VolumeUp), HoldStart(VolumeUp), HoldEnd(VolumeUp)));

    TouchSurface ended;
    ended.at(1000).finger(VolumeUp).forMs(600).set("HoldTimeoutMilliseconds", 5000).forMs(100).lift();
    EXPECT_THAT(ended.events(), ElementsAre(MayBegin(VolumeUp), HoldStart(VolumeUp), HoldEnd(VolumeUp).atFrame(60)))
        << "ended by a longer time-out it is not cancelled, too";
}

// A contact too weak for its duration, with a kind of suppression set before, and set again for the last 50 ms.
TEST_F(GestureTest, SuppressionCanBeSwitchedDuringATouch) {
    struct Row {
        const char* key;
        std::uint32_t durationMs;
        bool before, after;
        testing::Matcher<HIDEvents> events;
    };
    const GestureMatcher begin = MayBegin(VolumeUp);
    const GestureMatcher end = HoldEnd(VolumeUp).atFrame(60);
    const auto hold = ElementsAre(begin, HoldStart(VolumeUp).atFrame(51), end);
    for (const Row& row : {
             Row{"EnableHoldSuppression", 600, true, true, ElementsAre(begin, Cancel().atFrame(60))},
             Row{"EnableHoldSuppression", 600, false, false, hold},
             Row{"EnableHoldSuppression", 600, true, false, ElementsAre(begin, HoldStart(VolumeUp).atFrame(55), end)},
             Row{"EnableHoldSuppression", 600, false, true, hold}, // it has begun and goes on
             Row{"EnableTapSuppression", 450, true, true, ElementsAre(begin, Cancel())},
             Row{"EnableTapSuppression", 450, false, false, ElementsAre(begin, Tap(VolumeUp))},
             Row{"EnableTapSuppression", 450, true, false, ElementsAre(begin, Tap(VolumeUp))},
             Row{"EnableTapSuppression", 450, false, true, ElementsAre(begin, Cancel())},
         }) {
        TouchSurface fresh;
        fresh.set(row.key, row.before).at(1000).brush(VolumeUp).forMs(row.durationMs - 50);
        fresh.set(row.key, row.after).forMs(50).lift().idle();
        EXPECT_THAT(fresh.events(), row.events) << row.key << " from " << row.before << " to " << row.after;
    }
}

TEST_F(GestureTest, SuppressionSwitchedOffInASuppressedHoldLeavesItsTimeout) {
    surface.at(1000).brush(PlayPause).forMs(550).set("EnableHoldSuppression", false).lift();
    surface.at(5000).finger(PlayPause).forMs(80).lift();
    EXPECT_THAT(surface.events(), ElementsAre(MayBegin(PlayPause), Cancel(), MayBegin(PlayPause), Cancel()))
        << "flags that nothing clears keep the next touch from being a tap";
    surface.set("EnableHoldSuppression", true).at(8000).idle().finger(PlayPause).forMs(80).lift();
    EXPECT_THAT(surface.events().back(), Tap(PlayPause));
}

TEST_F(GestureTest, FirmwareResetEndsATouchAtTimeZero) {
    surface.at(1000).finger(VolumeDown).forMs(600).reset();
    EXPECT_THAT(surface.events(), ElementsAre(MayBegin(VolumeDown), HoldStart(VolumeDown),
                                              HoldEnd(VolumeDown).atFrame(0), FirmwareReset()));
    EXPECT_EQ(surface.hand.touchEndTime, 0U);
    EXPECT_EQ(surface.hand.touchScore, 0.0F);
}

} // namespace
} // namespace VeltoTouch::Tests
