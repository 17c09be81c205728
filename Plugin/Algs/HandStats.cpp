#include "Plugin/Algs/HandStats.h"

#include <algorithm>
#include <bit>

namespace VeltoTouch {

namespace {

// A value from 0 up as an integer of the same order; anything else, NaN too, is 0. The compiler may take the maximum of
// integers in any order, and so of several at once; of floats it may not.
std::int32_t orderOf(float value) noexcept { return std::bit_cast<std::int32_t>(value > 0.0F ? value : 0.0F); }

// What all pixels of a frame say together.
struct Summary {
    std::int32_t touching = 0;
    std::int32_t aboveNoise = 0;
    std::int32_t highest = 0;   // normalized value, by its order
    std::int32_t highestOn = 0; // the same of on pixels

    template <std::size_t Count>
    void add(const PixelBank<Count>& bank) noexcept {
        for (std::size_t i = 0; i < bank.kLanes; ++i) {
            const std::int32_t order = orderOf(bank.normalized[i]);
            touching |= bank.on[i];
            aboveNoise |= bank.aboveNoise[i];
            highest = std::max(highest, order);
            highestOn = std::max(highestOn, bank.on[i] != 0 ? order : 0);
        }
    }
};

// The index of the first pixel that `isWanted` picks; pads come before groups. Pad 0 where it picks none.
template <class IsWanted>
std::int32_t indexOfFirst(const Pixels& pixels, const VirtualPixels& virtualPixels, IsWanted isWanted) noexcept {
    for (std::size_t i = 0; i < kPadCount; ++i) {
        if (isWanted(pixels, i))
            return pixels.index[i];
    }
    for (std::size_t i = 0; i < kGroupCount; ++i) {
        if (isWanted(virtualPixels, i))
            return virtualPixels.index[i];
    }
    return 0;
}

} // namespace

void HandStats::updateEdgeTimes(std::uint32_t timeMs) noexcept {
    if (aboveNoise && !wasAboveNoise)
        aboveNoiseTime = timeMs;
    if (!aboveNoise && wasAboveNoise)
        belowNoiseTime = timeMs;
    if (touching && !wasTouching)
        touchStartTime = timeMs;
    if (!touching && wasTouching)
        touchEndTime = timeMs;
}

void HandStats::updateHandState(const Pixels& pixels, const VirtualPixels& virtualPixels,
                                std::uint32_t timeMs) noexcept {
    Summary frame;
    frame.add(pixels);
    frame.add(virtualPixels);
    if (const auto highest = std::bit_cast<float>(frame.highestOn); highest > peakValue) {
        peakValue = highest;
        peakPixel = indexOfFirst(pixels, virtualPixels, [highest](const auto& bank, std::size_t i) {
            return bank.on[i] != 0 && bank.normalized[i] == highest;
        });
    }

    wasTouching = touching;
    touching = frame.touching != 0;
    wasAboveNoise = aboveNoise;
    aboveNoise = frame.aboveNoise != 0;

    if (touching && holding) {
        const auto highest = std::bit_cast<float>(frame.highest);
        activeRegion =
            changeActiveRegion(pixels, indexOfFirst(pixels, virtualPixels, [highest](const auto& bank, std::size_t i) {
                                   return bank.normalized[i] == highest;
                               }));
    } else if (touching) {
        activeRegion = updateActiveRegion(pixels, virtualPixels, timeMs);
    }
    updateEdgeTimes(timeMs);
    updateTouchScore(pixels, virtualPixels, timeMs);
    updateTapRejection(pixels, virtualPixels);
    updateGestureState(timeMs);
}

void HandStats::Reset() noexcept {
    touchScore = 0;
    peakSignal = 0;
    peakValue = 0;
    peakPixel = 0;
}

} // namespace VeltoTouch
