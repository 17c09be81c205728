#include "Plugin/Algs/HandStats.h"
#include "Plugin/Algs/VirtualImage.h"

#include <algorithm>

// Which region a touch belongs to. People who press twice in a row mean the same control twice: shortly after a
// gesture a touch between two regions goes to the region of that gesture. A hold keeps its region until the finger has
// clearly moved: the new region must have gained on the old one, the more the faster the old one fades.

namespace VeltoTouch {
namespace {

constexpr std::size_t kPadI = padOf('I');
constexpr std::size_t kPadK = padOf('K');
constexpr std::size_t kPadM = padOf('M');

// The share of pad K's peak that a neighbouring group must exceed to take the touch from K.
constexpr float kPadKShare = 0.7F;

float& maxOf(std::array<float, kRegionCount>& regionMax, PixelRegion region) noexcept {
    return regionMax[static_cast<std::size_t>(region)];
}

// The two pads with the highest peaks of this touch; equal peaks keep pad order.
struct Leaders {
    std::size_t first;
    std::size_t second;
};

Leaders leadersOf(const Pixels::Lanes<float>& peaks) noexcept {
    Leaders leaders{0, 1};
    if (peaks[1] > peaks[0])
        leaders = {1, 0};
    for (std::size_t i = 2; i < kPadCount; ++i) {
        if (peaks[i] > peaks[leaders.first])
            leaders = {i, leaders.first};
        else if (peaks[i] > peaks[leaders.second])
            leaders.second = i;
    }
    return leaders;
}

} // namespace

PixelRegion HandStats::updateActiveRegion(const Pixels& pixels, const VirtualPixels& virtualPixels,
                                          std::uint32_t timeMs) noexcept {
    PixelRegion region = regionOfPad(peakPixel);
    const auto& peaks = pixels.peakAboveNoise;
    const auto [first, second] = leadersOf(peaks);
    const float bias = updateTimeBiasFactor(timeMs);
    const float noise = static_cast<float>(kNoiseFloor) / activationThreshold;
    const bool secondIsAboveNoise = peaks[second] > noise;

    if (region != eventRegion && secondIsAboveNoise && //
        regionOf(first) == region &&                   //
        regionOf(second) == eventRegion &&             //
        peaks[second] > peaks[first] * bias)
        region = eventRegion;

    // Pad K lies between the volume regions and belongs to neither: a finger beside it shows in the group of its
    // neighbours. May override the bias.
    if (peakPixel == kPadK && first == kPadK && secondIsAboveNoise) {
        const auto groupTakesTouch = [&](std::size_t group, PixelRegion volume) {
            const float share = eventRegion == volume ? std::min(bias, kPadKShare) : kPadKShare;
            return virtualPixels.peakAboveNoise[group] > share * peaks[kPadK];
        };
        if (second == kPadM && groupTakesTouch(VirtualImage::kKLM, PixelRegion::VolumeDown))
            region = PixelRegion::VolumeDown;
        else if (second == kPadI && groupTakesTouch(VirtualImage::kIJK, PixelRegion::VolumeUp))
            region = PixelRegion::VolumeUp;
    }

    updateRegionMax(pixels);
    return region;
}

PixelRegion HandStats::changeActiveRegion(const Pixels& pixels, std::int32_t strongestPad) noexcept {
    const PixelRegion current = activeRegion;
    previousRegion = current;
    const PixelRegion candidate = regionOfPad(strongestPad);
    if (candidate == current)
        return current;
    if (current == PixelRegion::None || candidate == PixelRegion::None)
        return candidate;

    const float maxBefore = maxOf(regionMax, current);
    const float ratioBefore = maxBefore > 0.0F ? maxOf(regionMax, candidate) / maxBefore : 0.0F;
    updateRegionMax(pixels);
    const float maxNow = maxOf(regionMax, current);
    const float drop = maxBefore > 0.0F ? std::max(maxBefore - maxNow, 0.0F) / maxBefore : 0.0F;
    if (!(maxNow > 0.0F))
        return candidate;
    const float neededGain = fuzzifyAndClip(drop, 0.2F, 0.5F, 1.3F, 5.0F);
    return maxOf(regionMax, candidate) / maxNow < ratioBefore * neededGain ? current : candidate;
}

void HandStats::updateRegionMax(const Pixels& pixels) noexcept {
    std::array<std::int32_t, kRegionCount> highest;
    highest.fill(kNoiseFloor);
    for (std::size_t pad = 0; pad < kPadCount; ++pad) {
        std::int32_t& highestOfRegion = highest[static_cast<std::size_t>(regionOf(pad))]; // every pad has a region
        highestOfRegion = std::max(highestOfRegion, pixels.value[pad]);
    }
    for (std::size_t region = 0; region < kRegionCount; ++region)
        regionMax[region] = static_cast<float>(highest[region]) - static_cast<float>(kNoiseFloor);
}

float HandStats::updateTimeBiasFactor(std::uint32_t timeMs) const noexcept {
    const auto secondsSinceEvent = static_cast<float>(static_cast<double>(elapsedMs(timeMs, lastEventTime)) * 0.001);
    return fuzzifyAndClip(secondsSinceEvent, 0.3F, 1.0F, 0.65F, 1.0F);
}

} // namespace VeltoTouch
