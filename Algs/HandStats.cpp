#include "Algs/HandStats.h"

namespace VeltoTouch {

void HandStats::scan(const Pixel& pixel, Scan& found) noexcept {
    found.aboveNoise |= pixel.aboveNoise;
    const float value = pixel.normalized > 0.0F ? pixel.normalized : 0.0F;
    if (pixel.on) {
        found.touching = true;
        if (value > peakValue) {
            peakValue = value;
            peakPixel = pixel.index;
        }
    }
    if (value > found.strongestValue) {
        found.strongestValue = value;
        found.strongestPad = pixel.index;
    }
}

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
    Scan found;
    for (const Pixel& pixel : pixels)
        scan(pixel, found);
    for (const VirtualPixel& pixel : virtualPixels)
        scan(pixel, found);

    wasTouching = touching;
    touching = found.touching;
    wasAboveNoise = aboveNoise;
    aboveNoise = found.aboveNoise;

    if (touching)
        activeRegion = holding ? changeActiveRegion(pixels, found.strongestPad)
                               : updateActiveRegion(pixels, virtualPixels, timeMs);
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
