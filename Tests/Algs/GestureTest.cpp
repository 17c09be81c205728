#include "Platform/JSON.h"
#include "Platform/Testing/LogCapture.h"
#include "Tests/Support/TouchFixture.h"

namespace VeltoTouch::Tests {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

// What contacts, clocks and settings of every kind come to, the stories compare with the reference. These tests show
// the rules, and what random stories hardly meet.
class GestureTest : public TouchTest {};

TEST_F(GestureTest, ContactsBecomeTapsHoldsAndCancels) {
    surface.at(1000).finger(VolumeUp).forMs(80).lift();                          // frames 0 to 8
    surface.finger(VolumeDown).forMs(600).press({{'E', 200}}).forMs(100).lift(); // 9 to 79
    surface.brush(VolumeDown).forMs(450).lift();                                 // 80 to 125
    EXPECT_THAT(surface.events(),
                ElementsAre(MayBegin(VolumeUp).atFrame(0), Tap(VolumeUp).atFrame(8), MayBegin(VolumeDown).atFrame(9),
                            HoldStart(VolumeDown).atFrame(60), HoldChange(PlayPause).atFrame(69),
                            HoldEnd(PlayPause).atFrame(79), MayBegin(VolumeDown).atFrame(80), Cancel().atFrame(125)));
    EXPECT_EQ(surface.hand.eventRegion, PlayPause) << "a cancelled contact is not remembered as a gesture";
    EXPECT_EQ(surface.hand.lastEventTime, 1790U);
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

TEST_F(GestureTest, SuppressionSwitchedOffInAHoldLeavesItsTimeout) {
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
}

TEST_F(GestureTest, OfEqualPadsTheFirstDecides) {
    surface.at(1000).press({{'H', 312}, {'N', 300}}).forFrames(1).press({{'N', 300}}).forFrames(1);
    EXPECT_EQ(surface.hand.activeRegion, VolumeUp) << "an equal peak displaces none";
    EXPECT_EQ(surface.press({{'N', 301}}).forFrames(1).hand.activeRegion, VolumeDown);
}

TEST_F(GestureTest, FrameLogsThreeTextsAtDebugLevel) {
    // What the recognizer logs of the next frame.
    const auto logOfFrame = [this](os_log_type_t level) {
        const LogCapture capture(level);
        surface.forFrames(1);
        std::vector<std::string> messages;
        for (const LogCapture::Line& line : capture.lines()) {
            if (line.category == "Algs")
                messages.push_back(line.message);
        }
        return messages;
    };
    surface.at(1000).finger(PlayPause).forFrames(1);
    EXPECT_THAT(
        logOfFrame(OS_LOG_TYPE_DEBUG),
        ElementsAre(
            AllOf(StartsWith("Frame 1 @1010ms, *** Event Stats ***\n"), HasSubstr("numRejectedTap")),
            AllOf(StartsWith("Frame 1 @1010ms, *** Touch State Description ***\nts="),
                  HasSubstr(", E= 150  287<==ON, F=  60  108, "), testing::EndsWith(" TOUCHING 10ms ActiveRegion=1")),
            AllOf(StartsWith("Frame 1 @1010ms, *** Virtual State Description ***\nts="), HasSubstr("[ABE= 191"))));
    EXPECT_THAT(logOfFrame(OS_LOG_TYPE_DEFAULT), IsEmpty());
    surface.set("ActivationThreshold", 0.0).forFrames(1);
    EXPECT_THAT(logOfFrame(OS_LOG_TYPE_DEBUG).at(1), AllOf(HasSubstr("sd=nan, "), testing::Not(HasSubstr("-nan"))));
}

TEST_F(GestureTest, CountsSuppressionThatTakesOverAHold) {
    // Switched off, hold suppression leaves its flags behind: they count before the hold does.
    surface.at(1000).brush(VolumeUp).forMs(550).set("EnableHoldSuppression", false).set("ResetEventStats", true);
    const Ref<Value> stats = surface.forFrames(2).get("EventStats");
    EXPECT_THAT(JSON::text(stats.get()),
                AllOf(HasSubstr(R"("numHolding2Suppressed":1)"), HasSubstr(R"("numRejectedVolumeIncrement":2)")));

    HandStats outlived; // the time-out that it came with
    outlived.touching = outlived.wasTouching = outlived.suppressingHold = true;
    EventStats counters;
    counters.update(outlived);
    EXPECT_EQ(counters.numRejectedBeginHold + counters.numRejectedIncrementHold, 0U);
}

TEST_F(GestureTest, TimeoutIsTheNumbersUnsignedReading) {
    EXPECT_EQ(surface.set("HoldTimeoutMilliseconds", 1e19).hand.holdTimeoutMs, 2313682944U);
    EXPECT_EQ(surface.set("HoldTimeoutMilliseconds", -1.5).hand.holdTimeoutMs, 4294967295U);
}

TEST_F(GestureTest, OnlyWholeKeysNameSettings) {
    for (const char* key : {"activationThreshold", "ActivationThreshold.0", "VirtualNormalizationFactors",
                            "VirtualNormalizationFactors.4294967296", "Algs.ActivationThreshold"})
        EXPECT_FALSE(surface.set(key, 1).get(key)) << key;
}

} // namespace
} // namespace VeltoTouch::Tests
