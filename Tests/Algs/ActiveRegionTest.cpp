#include "Plugin/Algs/Algs.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

using enum PixelRegion;

constexpr std::size_t padIndex(char pad) { return static_cast<std::size_t>(pad - 'A'); }
std::size_t groupIndex(const VirtualPixels& groups, std::string_view name) {
    return static_cast<std::size_t>(std::ranges::find(groups.names, name) - groups.names.begin());
}

// A pad ("E") or group ("KLM") and the highest normalized value that this touch has shown there.
struct Peak {
    std::string_view name;
    float value;
};

TEST(ActiveRegionTest, IsThePeaksUnlessLastGestureOrAGroupTakesIt) {
    struct Row {
        const char* name;
        std::vector<Peak> peaks; // the first is on the touch's peak pad
        PixelRegion lastGesture;
        std::uint32_t elapsed; // since then
        PixelRegion region;
    };
    for (const Row& row : {
             Row{"second at 65 %", {{"E", 2.0F}, {"L", 1.3F}}, VolumeDown, 290, PlayPause},
             Row{"second above 65 %", {{"E", 2.0F}, {"L", 1.301F}}, VolumeDown, 300, VolumeDown},
             Row{"later, second below 82.5 %", {{"E", 2.0F}, {"L", 1.649F}}, VolumeDown, 650, PlayPause},
             Row{"later, second above 82.5 %", {{"E", 2.0F}, {"L", 1.651F}}, VolumeDown, 650, VolumeDown},
             Row{"a second later", {{"E", 2.0F}, {"L", 1.999F}}, VolumeDown, 1000, PlayPause},
             Row{"second at the noise floor", {{"E", 0.5F}, {"L", 0.375F}}, VolumeDown, 290, PlayPause},
             Row{"second above noise", {{"E", 0.5F}, {"L", 0.376F}}, VolumeDown, 290, VolumeDown},
             Row{"only third there", {{"E", 1.5F}, {"H", 1.4F}, {"L", 1.3F}}, VolumeDown, 290, PlayPause},
             Row{"first not of the peak's region", {{"E", 0}, {"G", 1.5F}, {"L", 1.4F}}, VolumeDown, 290, PlayPause},
             // Were L taken for the first of the equals, E would be the second and win.
             Row{"equal peaks in pad order", {{"L", 1.0F}, {"E", 1.0F}}, PlayPause, 290, VolumeDown},

             // Pad K yields to the group of its neighbours: 70 % of its peak are 1.05, 65 % 0.975.
             Row{"K, M", {{"K", 1.5F}, {"M", 0.5F}, {"KLM", 1.06F}}, None, 100, VolumeDown},
             Row{"K, M no more than noise", {{"K", 1.5F}, {"M", 0.375F}, {"KLM", 1.4F}}, None, 100, PlayPause},
             Row{"K, M, group too weak", {{"K", 1.5F}, {"M", 0.5F}, {"KLM", 1.04F}}, None, 100, PlayPause},
             Row{"K, M, group of I", {{"K", 1.5F}, {"M", 0.5F}, {"IJK", 1.4F}}, None, 100, PlayPause},
             Row{"K, M, gesture there", {{"K", 1.5F}, {"M", 0.5F}, {"KLM", 1.0F}}, VolumeDown, 100, VolumeDown},
             Row{"K, M, gesture elsewhere", {{"K", 1.5F}, {"M", 0.5F}, {"KLM", 1.0F}}, VolumeUp, 100, PlayPause},
             Row{"K, I", {{"K", 1.5F}, {"I", 0.5F}, {"IJK", 1.06F}}, None, 100, VolumeUp},
             Row{"K, I, gesture there", {{"K", 1.5F}, {"I", 0.5F}, {"IJK", 1.0F}}, VolumeUp, 100, VolumeUp},
             Row{"K, L", {{"K", 1.5F}, {"L", 0.5F}, {"KLM", 1.4F}}, None, 100, PlayPause},
         }) {
        Algs algs;
        for (const auto& [name, value] : row.peaks) {
            if (name.size() == 1)
                algs.pixels.peakAboveNoise.at(padIndex(name.front())) = value;
            else
                algs.virtualPixels.peakAboveNoise.at(groupIndex(algs.virtualPixels, name)) = value;
        }
        HandStats& hand = algs.handStats;
        hand.peakPixel = row.peaks.front().name.front() - 'A';
        hand.eventRegion = row.lastGesture;
        hand.lastEventTime = 4294967200; // the device's clock wraps soon after
        const std::uint32_t now = hand.lastEventTime + row.elapsed;
        EXPECT_EQ(hand.updateActiveRegion(algs.pixels, algs.virtualPixels, now), row.region) << row.name;
    }
}

} // namespace
} // namespace VeltoTouch::Tests
