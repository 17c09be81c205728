#include "Platform/Testing/LogCapture.h"
#include "Tests/Support/TouchFixture.h"

namespace VeltoTouch::Tests {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

// The counters that are not 0: "Dispatched numPlayPause 1, numTaps 1; Rejected".
std::string countsIn(const Ref<Value>& statistics) {
    std::string counts;
    for (const auto& [part, counters] : as<Dictionary>(statistics)->entries()) {
        counts += (counts.empty() ? "" : "; ") + part;
        EXPECT_THAT(as<Dictionary>(counters)->entries(), testing::SizeIs(12)) << part;
        const char* separator = " ";
        for (const auto& [name, number] : as<Dictionary>(counters)->entries()) {
            if (const auto count = as<Number>(number)->unsignedLongLongValue(); count != 0)
                counts += std::exchange(separator, ", ") + name + ' ' + std::to_string(count);
        }
    }
    return counts;
}

// One tap, two taps that are rejected, a hold of 10 frames and a suppressed one of 6, far enough apart.
TEST(EventStatsTest, CountsWhatBecameOfEachContact) {
    constexpr std::uint32_t kTimedOut = 51; // the first frame past the time-out
    for (const auto& [region, name, step] :
         {std::tuple{VolumeDown, "Down", "Decrement"}, {VolumeUp, "Up", "Increment"}}) {
        TouchSurface surface;
        surface.at(1000).idle().finger(region).forFrames(8).lift();
        surface.at(5000).idle().brush(region).forFrames(45).lift();
        surface.at(10000).idle().brush(region).forFrames(45).lift();
        surface.at(15000).idle().finger(region).forFrames(kTimedOut + 10).lift();
        surface.at(20000).idle().brush(region).forFrames(kTimedOut + 6).lift().idle();
        const Ref<Value> snapshot = surface.get("EventStats");
        EXPECT_EQ(countsIn(surface.set("ResetEventStats", nullptr).get("EventStats")), "Dispatched; Rejected");
        EXPECT_EQ(countsIn(snapshot),
                  fmt::format("Dispatched numBeginHold 1, numEndHold 1, numIncrementHold 9, numTaps 1, "
                              "numVolume{1} 10, numVolume{0} 1; "
                              "Rejected numRejectedBeginHold 1, numRejectedEndHold 1, numRejectedIncrementHold 5, "
                              "numRejectedTap 2, numRejectedVolume{1} 6, numRejectedVolume{0} 2",
                              name, step));
    }
}

TEST(EventStatsTest, CountsTransitionsBetweenSuppressionAndHold) {
    TouchSurface recovering;
    recovering.at(1000).brush(PlayPause).forMs(550).set("ResetEventStats", true).press({{'E', 2000}}).forFrames(1);
    EXPECT_EQ(countsIn(recovering.get("EventStats")),
              "Dispatched numBeginHold 1, numOrviCall 1; Rejected numSuppressed2Holding 1");

    // Switched off, hold suppression leaves its flags behind: they count before the hold does.
    TouchSurface released;
    released.at(1000).brush(VolumeUp).forMs(550).set("ResetEventStats", true).set("EnableHoldSuppression", false);
    EXPECT_EQ(countsIn(released.forFrames(2).get("EventStats")),
              "Dispatched numHolding2Suppressed 1; Rejected numRejectedIncrementHold 2, numRejectedVolumeIncrement 2");
}

TEST(EventStatsTest, SuppressionWithoutTimeoutCountsVolumeAlone) {
    HandStats hand;
    hand.touching = hand.wasTouching = hand.suppressingHold = true;
    EventStats stats;
    for (const PixelRegion region : {None, PlayPause, VolumeDown, VolumeUp}) {
        hand.activeRegion = region;
        stats.update(hand);
    }
    EXPECT_EQ(countsIn(stats.statsDictionary()),
              "Dispatched; Rejected numRejectedVolumeDecrement 1, numRejectedVolumeIncrement 1");
}

class StateDescriptionsTest : public TouchTest {
protected:
    // What the recognizer logs of a frame, or of a reset.
    std::vector<std::string> logOfFrame(os_log_type_t level = OS_LOG_TYPE_DEBUG, bool reset = false) {
        const LogCapture capture(level);
        reset ? surface.reset() : surface.forFrames(1);
        std::vector<std::string> messages;
        for (const LogCapture::Line& line : capture.lines())
            if (line.category == "Algs")
                messages.push_back(line.message);
        return messages;
    }
    // What follows the pads in its description.
    std::string nextState(bool reset = false) {
        const std::string text = logOfFrame(OS_LOG_TYPE_DEBUG, reset).at(1);
        return text.substr(text.find(']') + 1);
    }
};

TEST_F(StateDescriptionsTest, EachFrameNamesItsState) {
    surface.at(1000);
    EXPECT_EQ(nextState(), " ");
    surface.finger(VolumeDown);
    EXPECT_EQ(nextState(), " STARTTOUCH 0ms ActiveRegion=2");
    EXPECT_EQ(nextState(), " TOUCHING 10ms ActiveRegion=2");
    surface.forMs(160).press({});
    EXPECT_EQ(nextState(), " TAP 180ms ActiveRegion=2 BELOWNOISE");
    EXPECT_EQ(nextState(), " ");
    surface.finger(VolumeUp).forFrames(51);
    EXPECT_EQ(nextState(), " STARTHOLD 510ms ActiveRegion=3");
    EXPECT_EQ(nextState(), " HOLDING 520ms ActiveRegion=3");
    surface.forFrames(67).press({{'G', 100}});
    EXPECT_EQ(nextState(), " ENDHOLD 1200ms ActiveRegion=3 ABOVENOISE");
    surface.idle().brush(PlayPause).forMs(450).press({});
    EXPECT_EQ(nextState(), " SUPPRESSTAP 450ms ActiveRegion=1 BELOWNOISE");
    surface.brush(PlayPause).forFrames(51);
    EXPECT_EQ(nextState(), " SUPPRESSHOLD 510ms ActiveRegion=1");
    surface.press({});
    EXPECT_EQ(nextState(), " ENDTOUCH 520ms ActiveRegion=1 BELOWNOISE");
    surface.set("EnableTapSuppression", false).at(5000).finger(VolumeUp).forMs(80);
    EXPECT_EQ(nextState(true), " TAP -5000ms ActiveRegion=3 BELOWNOISE") << "a reset ends the touch at time 0";
}

TEST_F(StateDescriptionsTest, EachFrameLogsThreeTextsAtDebugLevel) {
    surface.at(1000).finger(PlayPause).forFrames(1);
    EXPECT_THAT(logOfFrame(),
                ElementsAre(AllOf(StartsWith("Frame 1 @1010ms, *** Event Stats ***\n"), HasSubstr("numRejectedTap")),
                            AllOf(StartsWith("Frame 1 @1010ms, *** Touch State Description ***\nts="),
                                  HasSubstr(", E= 150  287<==ON, F=  60  108, ")),
                            AllOf(StartsWith("Frame 1 @1010ms, *** Virtual State Description ***\nts="),
                                  HasSubstr("[ABE= 191"))));
    EXPECT_THAT(logOfFrame(OS_LOG_TYPE_DEFAULT), testing::IsEmpty());
}

TEST_F(StateDescriptionsTest, NaNHasNoSign) {
    surface.set("ActivationThreshold", 0.0).at(1000).press({{'E', 150}}).forFrames(1);
    EXPECT_THAT(logOfFrame().at(1), AllOf(HasSubstr("sd=nan, tsd=nan, "), testing::Not(HasSubstr("-nan"))));
}

} // namespace
} // namespace VeltoTouch::Tests
