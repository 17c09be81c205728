#include "Algs/HandStats.h"
#include "Algs/Membership.h"
#include "Algs/VirtualImage.h"

#include <algorithm>

// Which region a touch belongs to. People who press twice in a row mean the same control twice: shortly after a
// gesture a touch between two regions goes to the region of that gesture. A hold keeps its region until the finger has
// clearly moved: the new region must have gained on the old one, the more the faster the old one fades.

namespace VeltoTouch {
namespace {

constexpr std::int32_t kPadI = 'I' - 'A';
constexpr std::int32_t kPadK = 'K' - 'A';
constexpr std::int32_t kPadM = 'M' - 'A';

// The share of pad K's peak that a neighbouring group must exceed to take the touch from K.
constexpr float kPadKShare = 0.7F;

float& maxOf(std::array<float, kRegionCount>& regionMax, PixelRegion region) noexcept {
    return regionMax[static_cast<std::size_t>(region)];
}

// The two pads with the highest peaks of this touch; equal peaks keep pad order.
struct Leaders {
    const Pixel* first;
    const Pixel* second;
};

Leaders leadersOf(const Pixels& pixels) noexcept {
    Leaders leaders{&pixels[0], &pixels[1]};
    if (leaders.second->peakAboveNoise > leaders.first->peakAboveNoise)
        std::swap(leaders.first, leaders.second);
    for (std::size_t i = 2; i < kPadCount; ++i) {
        if (pixels[i].peakAboveNoise > leaders.first->peakAboveNoise)
            leaders = {&pixels[i], leaders.first};
        else if (pixels[i].peakAboveNoise > leaders.second->peakAboveNoise)
            leaders.second = &pixels[i];
    }
    return leaders;
}

} // namespace

PixelRegion HandStats::updateActiveRegion(const Pixels& pixels, const VirtualPixels& virtualPixels,
                                          std::uint32_t timeMs) noexcept {
    PixelRegion region = pixels[static_cast<std::size_t>(peakPixel)].getPixelRegion();
    const auto [first, second] = leadersOf(pixels);
    const float bias = updateTimeBiasFactor(timeMs);
    const float noise = static_cast<float>(kNoiseFloor) / activationThreshold;
    const bool secondIsAboveNoise = second->peakAboveNoise > noise;

    if (region != eventRegion && secondIsAboveNoise && //
        first->getPixelRegion() == region &&           //
        second->getPixelRegion() == eventRegion &&     //
        second->peakAboveNoise > first->peakAboveNoise * bias)
        region = eventRegion;

    // Pad K lies between the volume regions and belongs to neither: a finger beside it shows in the group of its
    // neighbours. May override the bias.
    if (peakPixel == kPadK && first->index == kPadK && secondIsAboveNoise) {
        const auto groupTakesTouch = [&](std::size_t group, PixelRegion volume) {
            const float share = eventRegion == volume ? std::min(bias, kPadKShare) : kPadKShare;
            return virtualPixels[group].peakAboveNoise > share * pixels[kPadK].peakAboveNoise;
        };
        if (second->index == kPadM && groupTakesTouch(VirtualImage::kKLM, PixelRegion::VolumeDown))
            region = PixelRegion::VolumeDown;
        else if (second->index == kPadI && groupTakesTouch(VirtualImage::kIJK, PixelRegion::VolumeUp))
            region = PixelRegion::VolumeUp;
    }

    updateRegionMax(pixels);
    return region;
}

PixelRegion HandStats::changeActiveRegion(const Pixels& pixels, std::int32_t strongestPad) noexcept {
    const PixelRegion current = activeRegion;
    previousRegion = current;
    const PixelRegion candidate = pixels[static_cast<std::size_t>(strongestPad)].getPixelRegion();
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
    regionMax.fill(0.0F);
    for (const Pixel& pixel : pixels) {
        if (pixel.getPixelRegion() == PixelRegion::None)
            continue;
        const float excess = static_cast<float>(pixel.value) - static_cast<float>(kNoiseFloor);
        float& highest = maxOf(regionMax, pixel.getPixelRegion());
        if (excess > highest)
            highest = excess;
    }
}

float HandStats::updateTimeBiasFactor(std::uint32_t timeMs) const noexcept {
    const auto secondsSinceEvent = static_cast<float>(static_cast<double>(elapsedMs(timeMs, lastEventTime)) * 0.001);
    return fuzzifyAndClip(secondsSinceEvent, 0.3F, 1.0F, 0.65F, 1.0F);
}

} // namespace VeltoTouch
