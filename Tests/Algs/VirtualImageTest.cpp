#include "Tests/Support/TouchFixture.h"

namespace VeltoTouch::Tests {
namespace {

class VirtualImageTest : public TouchTest {
protected:
    VirtualPixel group(std::string_view name) { return surface.algs.virtualPixels[groupIndex(name)]; }
    std::int32_t sumOf(std::string_view name) { return surface.algs.virtualImage.values.at(groupIndex(name)); }
    // The dominant pad's letter, after a frame with these signals.
    char dominantPad(std::string_view name, PadSignals signals) {
        surface.press(signals).forFrames(1);
        return static_cast<char>('A' + group(name).index);
    }
};

TEST_F(VirtualImageTest, DominantPadIsDisplacedOnlyByAStrongerOne) {
    EXPECT_EQ(dominantPad("MNO", {}), 'M') << "the group's first pad at the beginning";
    EXPECT_EQ(dominantPad("MNO", {{'N', 72}, {'O', 72}}), 'M') << "noise displaces nothing";
    EXPECT_EQ(sumOf("MNO"), 0);
    EXPECT_EQ(dominantPad("MNO", {{'N', 100}, {'O', 100}}), 'N') << "of equal pads the first";
    EXPECT_EQ(dominantPad("MNO", {}), 'N') << "carried over an idle frame";
    EXPECT_EQ(dominantPad("MNO", {{'O', 200}}), 'O');
    EXPECT_EQ(dominantPad("MNO", {{'N', 100}, {'O', 100}}), 'O') << "of equal pads the present one";
    surface.algs.Reset();
    EXPECT_EQ(dominantPad("MNO", {}), 'O') << "carried over the end of a touch";
}

TEST_F(VirtualImageTest, SumsAreNarrowedTo16Bits) {
    surface.press({{'E', 10000}, {'F', 10000}}).forFrames(1); // values 19163 and 18105
    EXPECT_EQ(sumOf("BCEF"), 37268);
    EXPECT_EQ(group("BCEF").value, -18846); // 0.6667 * (37268 - 65536)
    EXPECT_FALSE(group("BCEF").on || group("BCEF").aboveNoise);
    EXPECT_EQ(group("ABE").value, 12775) << "a sum in range";
    surface.press({{'A', 17050}, {'E', 17098}}).forFrames(1); // values 32768 and 32764
    EXPECT_EQ(group("ABE").value, -2) << "a sum of 65532 is -4";
}

} // namespace
} // namespace VeltoTouch::Tests
