#include "Velto/Analysis/WouldBe.h"
#include "Platform/JSON.h"
#include "Tests/Analysis/RecordedSurface.h"
#include "Velto/Analysis/Replay.h"
#include "Velto/Analysis/TouchObserver.h"

namespace VeltoTouch::Tests {
namespace {

using namespace Analysis;
using enum PixelRegion;

class WouldBeTest : public RecordedSurfaceTest {
protected:
    // "hold with HoldTimeoutMilliseconds=69, ..." of the last touch.
    [[nodiscard]] std::string alternatives(const std::vector<Setting>& settings = {}) const {
        const Track recorded = track();
        std::vector<Touch> touches = touchesOf(recorded, settings);
        findAlternatives(recorded, settings, {&touches.back()});
        std::string text;
        for (const Alternative& alternative : touches.back().wouldBe) {
            text += fmt::format("{}{} with {}={}", text.empty() ? "" : ", ",
                                alternative.outcome ? nameOf(*alternative.outcome) : "none",
                                alternative.setting.key.substr(alternative.setting.key.rfind('.') + 1),
                                JSON::text(alternative.setting.value.get()));
        }
        return text;
    }
};

TEST_F(WouldBeTest, NamesTheNearestValueOfEachSetting) {
    surface.at(1000).idle().finger(PlayPause).forMs(80).lift();
    EXPECT_EQ("hold with HoldTimeoutMilliseconds=69", alternatives());
    surface.idle().brush(VolumeUp).forMs(450).lift();
    EXPECT_EQ("tap with EnableTapSuppression=false", alternatives());
    surface.idle().brush(VolumeUp).forMs(700).lift();
    EXPECT_EQ("hold with EnableHoldSuppression=false", alternatives());
    surface.idle().finger(VolumeDown).forMs(700).lift();
    EXPECT_EQ("cancel with HoldTimeoutMilliseconds=690", alternatives());
}

// The recording's own writes of the key are left out, and what is given with the touches stays in force.
TEST_F(WouldBeTest, StartsFromTheSettingsInForce) {
    surface.set("HoldTimeoutMilliseconds", Number::Content(std::int64_t{50}))
        .at(1000)
        .idle()
        .finger(PlayPause)
        .forMs(80)
        .lift();
    EXPECT_EQ("tap with HoldTimeoutMilliseconds=70", alternatives());
    EXPECT_EQ("hold with HoldTimeoutMilliseconds=69",
              alternatives({{.key = "Pipeline.Algs.HoldTimeoutMilliseconds", .value = Number::withLongLong(200)}}));
}

// No touch at all is said only if nothing else is found.
TEST_F(WouldBeTest, SaysNoneOnlyWhereNothingElseIs) {
    surface.set("HoldTimeoutMilliseconds", Number::Content(std::int64_t{0}))
        .at(1000)
        .idle()
        .brush(VolumeUp)
        .forFrames(1)
        .lift();
    EXPECT_EQ("none with ActivationThreshold=204", alternatives());
}

} // namespace
} // namespace VeltoTouch::Tests
