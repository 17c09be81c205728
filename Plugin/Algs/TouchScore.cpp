#include "Plugin/Algs/HandStats.h"

#include <algorithm>
#include <cmath>

namespace VeltoTouch {

void HandStats::updateTouchScore(const Pixels& pixels, const VirtualPixels& virtualPixels,
                                 std::uint32_t timeMs) noexcept {
    svm.updateSVMScore(pixels, virtualPixels, activationThreshold, timeMs);
    if (aboveNoise && !wasAboveNoise && touchScore != 0.0F)
        decayTouchScore(timeMs);
    touchScore += svm.getSVMScore();
    if (touchScore > touchScoreLimit)
        touchScore = touchScoreLimit;
    else if (touchScore < -touchScoreLimit)
        touchScore = -touchScoreLimit;
}

void HandStats::decayTouchScore(std::uint32_t timeMs) noexcept {
    // A gap of 0 ms wraps to the longest one and clears the score, as every gap of 3 ms or more does.
    const auto gap = static_cast<double>(elapsedMs(timeMs, belowNoiseTime) - 1U);
    const double kept = 1.0 - std::exp(gap) / (static_cast<double>(decayParameter) - 1.0);
    const double magnitude = std::max(0.0, kept * std::fabs(static_cast<double>(touchScore)));
    touchScore = static_cast<float>(std::signbit(touchScore) ? -magnitude : magnitude);
}

} // namespace VeltoTouch
