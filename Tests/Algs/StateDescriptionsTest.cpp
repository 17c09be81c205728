#include "Platform/JSON.h"
#include "Tests/Support/TouchFixture.h"

#include <fstream>
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
    struct Row {
        const char* state;
        std::function<void()> before; // and then one frame
    };
    const std::vector<Row> rows{
        {" ", [&] { surface.at(1000); }},
        {" STARTTOUCH 0ms ActiveRegion=2", [&] { surface.finger(VolumeDown); }},
        {" TOUCHING 10ms ActiveRegion=2", [] {}},
        {" TAP 180ms ActiveRegion=2 BELOWNOISE", [&] { surface.forMs(160).press({}); }},
        {" ", [] {}},
        {" STARTHOLD 510ms ActiveRegion=3", [&] { surface.finger(VolumeUp).forFrames(51); }},
        {" HOLDING 520ms ActiveRegion=3", [] {}},
        {" ENDHOLD 1200ms ActiveRegion=3 ABOVENOISE",
         [&] {
             surface.forFrames(67).press({{'G', 100}});
         }},
        {" SUPPRESSTAP 450ms ActiveRegion=1 BELOWNOISE", [&] { surface.idle().brush(PlayPause).forMs(450).press({}); }},
        {" SUPPRESSHOLD 510ms ActiveRegion=1", [&] { surface.brush(PlayPause).forFrames(51); }},
        {" ENDTOUCH 520ms ActiveRegion=1 BELOWNOISE", [&] { surface.press({}); }},
    };
    for (const Row& row : rows) {
        row.before();
        EXPECT_EQ(stateAfter([&] { surface.forFrames(1); }), row.state);
    }
}

TEST_F(StateDescriptionsTest, ResetDuringATouchPrintsANegativeDuration) {
    surface.set("EnableTapSuppression", false).at(1000).finger(VolumeUp).forMs(80);
    EXPECT_EQ(stateAfter([&] { surface.reset(); }), " TAP -1000ms ActiveRegion=3 BELOWNOISE");
}

TEST_F(StateDescriptionsTest, TextsAreThoseOfTheKnownRecording) {
    std::ifstream expected(VELTO_RECORDINGS "/tap-example.expected.jsonl");
    const auto textIn = [](const Ref<Value>& line, const char* key) {
        return as<String>(as<Dictionary>(line)->find(key))->text();
    };
    surface.at(1000);
    int frames = 0;
    for (std::string text; std::getline(expected, text);) {
        const auto line = JSON::parse(text);
        if (textIn(line, "kind") != "frame")
            continue;
        if (frames == 1)
            surface.finger(PlayPause);
        if (frames == 9)
            surface.press({});
        const auto messages = logOf([&] { surface.forFrames(1); });
        const std::string frame = "Frame " + std::to_string(frames) + " @" + std::to_string(1000 + 10 * frames) + "ms";
        EXPECT_THAT(messages,
                    ElementsAre(AllOf(StartsWith(frame + ", *** Event Stats ***\n"), HasSubstr("numRejectedTap")),
                                frame + ", *** Touch State Description ***\n" + textIn(line, "touch"),
                                frame + ", *** Virtual State Description ***\n" + textIn(line, "virtual")));
        ++frames;
    }
    EXPECT_EQ(frames, 10);
}

TEST_F(StateDescriptionsTest, NothingIsLoggedAboveDebugLevel) {
    EXPECT_THAT(logOf([&] { surface.at(1000).finger(PlayPause).forMs(80).lift(); }, OS_LOG_TYPE_DEFAULT),
                testing::IsEmpty());
}

TEST_F(StateDescriptionsTest, NaNHasNoSign) {
    surface.set("ActivationThreshold", 0).at(1000).press({{'E', 150}}).forFrames(2);
    const std::array<std::int16_t, kPadCount> noContact{};
    const std::string text = surface.algs.touchStateDescription(noContact.data(), 1020);
    EXPECT_THAT(text, HasSubstr("sd=nan, tsd=nan, ")) << surface.hand.signalPerDuration;
    EXPECT_THAT(text, testing::Not(HasSubstr("-nan")));
}

} // namespace
} // namespace VeltoTouch::Tests
