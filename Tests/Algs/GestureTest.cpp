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

TEST(HandStatsTest, AScoreAtItsThresholdIsEnoughForAHold) {
    HandStats hand;
    hand.touching = true;
    hand.touchScore = hand.holdScoreThreshold;
    hand.updateGestureState(hand.touchStartTime + hand.holdTimeoutMs + 1);
    EXPECT_TRUE(hand.holding);
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

} // namespace
} // namespace VeltoTouch::Tests
