#include "Tests/Support/TouchFixture.h"

namespace VeltoTouch::Tests {
namespace {

// A pad ("E") or group ("KLM") and the highest normalized value that this touch has shown there.
struct Peak {
    std::string_view name;
    float value;
};
using Peaks = std::initializer_list<Peak>;

// The region of a touch with its peak on `peakPad`, this long after a gesture in `lastGesture`.
PixelRegion regionOfTouch(char peakPad, Peaks peaks, PixelRegion lastGesture, std::uint32_t elapsed) {
    Algs algs;
    for (const auto& [name, value] : peaks) {
        if (name.size() == 1)
            algs.pixels.peakAboveNoise.at(padIndex(name.front())) = value;
        else
            algs.virtualPixels.peakAboveNoise.at(groupIndex(name)) = value;
    }
    algs.handStats.peakPixel = peakPad - 'A';
    algs.handStats.eventRegion = lastGesture;
    algs.handStats.lastEventTime = 4294967200; // the device's clock wraps soon after
    return algs.handStats.updateActiveRegion(algs.pixels, algs.virtualPixels, 4294967200 + elapsed);
}

TEST(ActiveRegionTest, LastGesturesRegionWinsWhereItsPadIsAlmostAsStrong) {
    struct Row {
        const char* name;
        char peakPad;
        Peaks peaks;
        PixelRegion lastGesture;
        std::uint32_t elapsed;
        PixelRegion region;
    };
    for (const Row& row : {
             Row{"second at 65 %", 'E', {{"E", 2.0F}, {"L", 1.3F}}, VolumeDown, 290, PlayPause},
             Row{"second above 65 %", 'E', {{"E", 2.0F}, {"L", 1.301F}}, VolumeDown, 300, VolumeDown},
             Row{"later, second below 82.5 %", 'E', {{"E", 2.0F}, {"L", 1.649F}}, VolumeDown, 650, PlayPause},
             Row{"later, second above 82.5 %", 'E', {{"E", 2.0F}, {"L", 1.651F}}, VolumeDown, 650, VolumeDown},
             Row{"a second later", 'E', {{"E", 2.0F}, {"L", 1.999F}}, VolumeDown, 1000, PlayPause},
             Row{"second at the noise floor", 'E', {{"E", 0.5F}, {"L", 0.375F}}, VolumeDown, 290, PlayPause},
             Row{"second above noise", 'E', {{"E", 0.5F}, {"L", 0.376F}}, VolumeDown, 290, VolumeDown},
             Row{"only third there", 'E', {{"E", 1.5F}, {"H", 1.4F}, {"L", 1.3F}}, VolumeDown, 290, PlayPause},
             Row{"first not of the peak's region", 'E', {{"G", 1.5F}, {"L", 1.4F}}, VolumeDown, 290, PlayPause},
             // Were L taken for the first of the equals, E would be the second and win.
             Row{"equal peaks in pad order", 'L', {{"E", 1.0F}, {"L", 1.0F}}, PlayPause, 290, VolumeDown},
         })
        EXPECT_EQ(regionOfTouch(row.peakPad, row.peaks, row.lastGesture, row.elapsed), row.region) << row.name;
}

TEST(ActiveRegionTest, PadKYieldsToTheGroupOfItsNeighbours) {
    struct Row {
        const char* name;
        Peak second, group;
        PixelRegion lastGesture;
        PixelRegion region;
    };
    for (const Row& row : {
             // 70 % of K's peak are 1.05, 65 % 0.975
             Row{"M", {"M", 0.5F}, {"KLM", 1.06F}, None, VolumeDown},
             Row{"M no more than noise", {"M", 0.375F}, {"KLM", 1.4F}, None, PlayPause},
             Row{"M, group too weak", {"M", 0.5F}, {"KLM", 1.04F}, None, PlayPause},
             Row{"M, group of I", {"M", 0.5F}, {"IJK", 1.4F}, None, PlayPause},
             Row{"M, after a gesture there", {"M", 0.5F}, {"KLM", 1.0F}, VolumeDown, VolumeDown},
             Row{"M, after a gesture elsewhere", {"M", 0.5F}, {"KLM", 1.0F}, VolumeUp, PlayPause},
             Row{"I", {"I", 0.5F}, {"IJK", 1.06F}, None, VolumeUp},
             Row{"I, after a gesture there", {"I", 0.5F}, {"IJK", 1.0F}, VolumeUp, VolumeUp},
             Row{"L", {"L", 0.5F}, {"KLM", 1.4F}, None, PlayPause},
         })
        EXPECT_EQ(regionOfTouch('K', {{"K", 1.5F}, row.second, row.group}, row.lastGesture, 100), row.region)
            << row.name;
}

TEST(ActiveRegionTest, HoldStaysUntilAnotherRegionHasGainedEnough) {
    struct Row {
        const char* name;
        float ownBefore, otherBefore; // excess over the noise floor
        int own, other;
        PixelRegion region;
    };
    for (const Row& row : {
             Row{"steady, gain below 1.3", 100, 20, 100, 25, VolumeDown},
             Row{"steady, gain above 1.3", 100, 20, 100, 27, PlayPause},
             Row{"35 % drop, gain below 3.15", 100, 20, 65, 40, VolumeDown},
             Row{"35 % drop, gain above 3.15", 100, 20, 65, 41, PlayPause},
             Row{"80 % drop, gain above 5", 100, 20, 20, 21, PlayPause},
             Row{"own region gone", 100, 20, 0, 1, PlayPause},
             Row{"other region is new", 100, 0, 100, 1, PlayPause},
         }) {
        Algs algs;
        HandStats& hand = algs.handStats;
        hand.activeRegion = VolumeDown;
        hand.regionMax = {0, row.otherBefore, row.ownBefore, 0};
        algs.pixels.value[padIndex('N')] = kNoiseFloor + row.own;
        algs.pixels.value[padIndex('E')] = kNoiseFloor + row.other;
        EXPECT_EQ(hand.changeActiveRegion(algs.pixels, 'N' - 'A'), VolumeDown) << row.name;
        EXPECT_EQ(hand.regionMax[1], row.otherBefore) << "kept while the hold stays in one region";
        EXPECT_EQ(hand.changeActiveRegion(algs.pixels, 'E' - 'A'), row.region) << row.name;
        EXPECT_EQ(hand.previousRegion, VolumeDown) << row.name;
        EXPECT_EQ(hand.regionMax[1], static_cast<float>(row.other)) << row.name;
    }
}

class TouchRegionTest : public TouchTest {};

TEST_F(TouchRegionTest, IsThatOfTheTouchsHighestPeak) {
    const auto regionAfter = [&](PadSignals signals) { return surface.press(signals).forFrames(1).hand.activeRegion; };
    surface.at(1000);
    EXPECT_EQ(regionAfter({{'H', 312}, {'N', 300}}), VolumeUp) << "of equal pads the first";
    EXPECT_EQ(regionAfter({{'N', 300}}), VolumeUp) << "an equal peak displaces none";
    EXPECT_EQ(regionAfter({{'N', 301}}), VolumeDown);
    EXPECT_EQ(regionAfter({{'H', 250}}), VolumeDown) << "kept while the touch lasts";
    EXPECT_EQ(regionAfter({}), VolumeDown) << "kept between touches";
    EXPECT_EQ(regionAfter({{'H', 250}}), VolumeUp) << "the next touch starts its peak anew";
}

TEST_F(TouchRegionTest, BetweenPadsIsThatOfTheGroupsDominantPad) {
    surface.at(1000).press({{'E', 99}, {'K', 79}, {'L', 127}}).forFrames(1); // CELN alone is on, L its strongest
    EXPECT_THAT(surface.events(), testing::ElementsAre(MayBegin(VolumeDown)));
    EXPECT_EQ(surface.hand.peakPixel, 'L' - 'A');
}

} // namespace
} // namespace VeltoTouch::Tests
