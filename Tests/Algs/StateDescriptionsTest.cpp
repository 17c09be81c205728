#include "Tests/Support/TouchFixture.h"

#include <functional>

namespace VeltoTouch::Tests {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class StateDescriptionsTest : public TouchTest {};

// The texts of the frame that `touch` sent last, as the recognizer logs them.
std::vector<std::string> logOf(const std::function<void()>& touch, os_log_type_t level = OS_LOG_TYPE_DEBUG) {
    const LogCapture capture(level);
    touch();
    std::vector<std::string> messages;
    for (const LogCapture::Line& line : capture.lines())
        if (line.category == "Algs")
            messages.push_back(line.message);
    return messages;
}

// What follows the pads in the last frame's description.
std::string stateAfter(const std::function<void()>& touch) {
    const std::string text = logOf(touch).at(1);
    return text.substr(text.find(']') + 1);
}

TEST_F(StateDescriptionsTest, EachFrameNamesItsState) {
    const auto nextState = [&] { return stateAfter([&] { surface.forFrames(1); }); };
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
}

TEST_F(StateDescriptionsTest, ResetDuringATouchPrintsANegativeDuration) {
    surface.set("EnableTapSuppression", false).at(1000).finger(VolumeUp).forMs(80);
    EXPECT_EQ(stateAfter([&] { surface.reset(); }), " TAP -1000ms ActiveRegion=3 BELOWNOISE");
}

TEST_F(StateDescriptionsTest, EachFrameLogsThreeTextsAtDebugLevel) {
    surface.at(1000).finger(PlayPause).forFrames(1);
    const auto frame = [&] { surface.forFrames(1); };
    EXPECT_THAT(logOf(frame),
                ElementsAre(AllOf(StartsWith("Frame 1 @1010ms, *** Event Stats ***\n"), HasSubstr("numRejectedTap")),
                            AllOf(StartsWith("Frame 1 @1010ms, *** Touch State Description ***\nts="),
                                  HasSubstr(", E= 150  287<==ON, F=  60  108, ")),
                            AllOf(StartsWith("Frame 1 @1010ms, *** Virtual State Description ***\nts="),
                                  HasSubstr("[ABE= 191"))));
    EXPECT_THAT(logOf(frame, OS_LOG_TYPE_DEFAULT), testing::IsEmpty());
}

TEST_F(StateDescriptionsTest, NaNHasNoSign) {
    surface.set("ActivationThreshold", 0.0).at(1000).press({{'E', 150}}).forFrames(2);
    const std::array<std::int16_t, kPadCount> noContact{};
    const std::string text = surface.algs.touchStateDescription(noContact.data(), 1020);
    EXPECT_THAT(text, HasSubstr("sd=nan, tsd=nan, ")) << surface.hand.signalPerDuration;
    EXPECT_THAT(text, testing::Not(HasSubstr("-nan")));
}

} // namespace
} // namespace VeltoTouch::Tests
