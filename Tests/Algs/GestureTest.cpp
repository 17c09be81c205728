#include "Tests/Support/TouchFixture.h"

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;

class GestureTest : public TouchTest {};

TEST_F(GestureTest, EventsCarryMaskPhaseRegionAndFrame) {
    surface.at(1000).finger(VolumeUp).forMs(80).lift();                          // frames 0 to 8
    surface.finger(VolumeDown).forMs(600).press({{'E', 200}}).forMs(100).lift(); // 9 to 79
    surface.brush(PlayPause).forMs(450).lift();                                  // 80 to 125
    struct Row {
        const char* name;
        std::uint32_t mask;
        std::uint16_t phase;
        double y;
        CFIndex frame;
    };
    const std::vector<Row> rows{
        {"may begin", 0, 0x80, 3.0, 0},  {"tap", 0x20000, 0, 3.0, 8},      {"may begin", 0, 0x80, 2.0, 9},
        {"hold start", 2, 0x1, 2.0, 60}, {"hold change", 2, 0x2, 1.0, 69}, {"hold end", 2, 0x4, 1.0, 79},
        {"may begin", 0, 0x80, 1.0, 80}, {"cancel", 0, 0x8, 0.0, 125},
    };
    ASSERT_EQ(surface.events().size(), rows.size()) << testing::PrintToString(surface.events());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const HIDEvent* event = surface.events()[i].get();
        ASSERT_EQ(IOHIDEventGetType(event), kIOHIDEventTypeDigitizer);
        EXPECT_EQ(IOHIDEventGetIntegerValue(event, kIOHIDEventFieldDigitizerEventMask), rows[i].mask) << rows[i].name;
        EXPECT_EQ(IOHIDEventGetPhase(event), rows[i].phase) << rows[i].name;
        EXPECT_EQ(IOHIDEventGetFloatValue(event, kIOHIDEventFieldDigitizerX), 0.0) << rows[i].name;
        EXPECT_EQ(IOHIDEventGetFloatValue(event, kIOHIDEventFieldDigitizerY), rows[i].y) << rows[i].name;
        EXPECT_EQ(IOHIDEventGetIntegerValue(event, 0x000B001B), rows[i].frame) << rows[i].name;
        EXPECT_EQ(IOHIDEventGetIntegerValue(event, kIOHIDEventFieldDigitizerTransducerType), 2) << rows[i].name;
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

TEST_F(GestureTest, TimeoutSetDuringATouchCounts) {
    surface.at(1000).finger(PlayPause).forMs(300).set("HoldTimeoutMilliseconds", 250).forFrames(1);
    EXPECT_THAT(surface.events(), ElementsAre(MayBegin(PlayPause), HoldStart(PlayPause).atFrame(30)));
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
    const GestureMatcher end = HoldEnd(VolumeUp);
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

TEST_F(GestureTest, HoldLastsHoweverWeakItGrows) {
    surface.at(1000).finger(VolumeUp).forMs(520).brush(VolumeUp).forMs(500);
    EXPECT_LT(surface.hand.touchScore, 0.0F);
    EXPECT_FALSE(surface.hand.suppressingHold);
    EXPECT_THAT(surface.events(), ElementsAre(MayBegin(VolumeUp), HoldStart(VolumeUp)));
}

TEST_F(GestureTest, HoldChangesRegionWhenTheFingerHasClearlyMoved) {
    surface.at(1000).press({{'L', 200}, {'E', 150}}).forMs(600);
    surface.press({{'L', 200}, {'E', 165}}).forMs(100); // E is the stronger one by now
    EXPECT_THAT(surface.events(), ElementsAre(MayBegin(VolumeDown), HoldStart(VolumeDown)));
    surface.press({{'L', 200}, {'E', 400}}).forMs(100);
    EXPECT_THAT(surface.events().back(), HoldChange(PlayPause).atFrame(70));
}

TEST_F(GestureTest, HoldEndedByALongerTimeoutIsNotCancelledToo) {
    surface.at(1000).finger(VolumeDown).forMs(600).set("HoldTimeoutMilliseconds", 5000).forMs(100).lift();
    EXPECT_THAT(surface.events(),
                ElementsAre(MayBegin(VolumeDown), HoldStart(VolumeDown), HoldEnd(VolumeDown).atFrame(60)));
}

TEST_F(GestureTest, SuppressedHoldThatRecoversIsAHold) {
    surface.at(1000).brush(PlayPause).forMs(600).press({{'E', 400}}).forMs(100).lift();
    EXPECT_THAT(surface.events(), ElementsAre(MayBegin(PlayPause), HoldStart(PlayPause), HoldEnd(PlayPause)));
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
    struct Row {
        const char* name;
        bool before, after;
        GestureMatcher last;
    };
    for (const Row& row :
         {Row{"on", true, true, Cancel()}, Row{"off", false, false, Tap(VolumeDown)},
          Row{"switched off", true, false, Tap(VolumeDown)}, Row{"switched on", false, true, Cancel()}}) {
        TouchSurface fresh;
        fresh.set("EnableTapSuppression", row.before).at(1000).brush(VolumeDown).forMs(400);
        fresh.set("EnableTapSuppression", row.after).forMs(50).lift().idle();
        EXPECT_THAT(fresh.events(), ElementsAre(MayBegin(VolumeDown), row.last)) << row.name;
    }
}

TEST_F(GestureTest, OnlyTapsAndHoldEndsAreRememberedAsGestures) {
    surface.at(1000).finger(VolumeUp).forMs(80).lift();
    EXPECT_EQ(surface.hand.lastEventTime, 1080U);
    surface.at(3000).brush(PlayPause).forMs(450).lift();
    EXPECT_EQ(surface.hand.eventRegion, VolumeUp);
    EXPECT_EQ(surface.hand.lastEventTime, 1080U);
    surface.at(5000).finger(VolumeDown).forMs(600).lift();
    EXPECT_EQ(surface.hand.eventRegion, VolumeDown);
    EXPECT_EQ(surface.hand.lastEventTime, 5600U);
}

TEST_F(GestureTest, FirmwareResetEndsATouchAtTimeZero) {
    struct Row {
        const char* name;
        std::uint32_t touchMs;
        bool tapSuppression;
        testing::Matcher<HIDEvents> events;
    };
    for (const Row& row : {
             Row{"no touch", 0, true, ElementsAre(FirmwareReset())},
             Row{"touch", 80, true, ElementsAre(MayBegin(VolumeDown), Cancel().atFrame(0), FirmwareReset())},
             Row{"tap", 80, false, ElementsAre(MayBegin(VolumeDown), Tap(VolumeDown).atFrame(0), FirmwareReset())},
             Row{"hold", 600, true,
                 ElementsAre(MayBegin(VolumeDown), HoldStart(VolumeDown), HoldEnd(VolumeDown).atFrame(0),
                             FirmwareReset())},
         }) {
        TouchSurface fresh;
        fresh.set("EnableTapSuppression", row.tapSuppression);
        fresh.at(1000).finger(VolumeDown).forMs(row.touchMs).reset();
        EXPECT_THAT(fresh.events(), row.events) << row.name;
        EXPECT_EQ(fresh.hand.touchEndTime, 0U) << row.name;
        EXPECT_EQ(fresh.hand.touchScore, 0.0F) << row.name;
    }
}

} // namespace
} // namespace VeltoTouch::Tests
