#include "Plugin/Algs/HandStats.h"

#include <algorithm>

// The tap model: a fixed linear model over how strong a contact was for its duration, how much of its time above
// noise it spent touching, and how many pixels it left above noise without turning them on. Palms and sleeves are
// weak for their duration and leave many.

namespace VeltoTouch {
namespace {

constexpr std::int32_t kAllowedInactivePixels = 21;

// Pixels that rose above noise during this touch but never turned on.
template <std::size_t Count>
std::int32_t inactiveCount(const PixelBank<Count>& bank) noexcept {
    std::int32_t count = 0;
    for (std::size_t i = 0; i < Count; ++i)
        count += bank.everAboveNoise[i] & ~bank.everOn[i];
    return count;
}

} // namespace

void HandStats::updateTapRejection(const Pixels& pixels, const VirtualPixels& virtualPixels) noexcept {
    peakSignal = peakValue * activationThreshold;
    const std::uint32_t duration =
        std::min(elapsedMs(touchEndTime, aboveNoiseTime), elapsedMs(touchEndTime, lastEventTime));
    const std::uint32_t touchDuration = elapsedMs(touchEndTime, touchStartTime);

    signalPerDuration = 0;
    signalPerTouchDuration = 0;
    timeDurationRatio = 0;
    if (duration != 0) {
        signalPerDuration = peakSignal / static_cast<float>(duration) - 0.51F;
        timeDurationRatio = static_cast<float>(touchDuration) / static_cast<float>(duration) - 0.25F;
    }
    if (touchDuration != 0)
        signalPerTouchDuration = peakSignal / static_cast<float>(touchDuration) - 0.65F;

    nonActivePixels = kAllowedInactivePixels - inactiveCount(pixels) - inactiveCount(virtualPixels);

    // The grouping is part of the result.
    tapSVMScore = kNonActivePixelsWeight * static_cast<float>(nonActivePixels) +
                  (kSignalPerDurationWeight * signalPerDuration + kTimeDurationRatioWeight * timeDurationRatio) -
                  2.4116F;

    tapRejected = signalPerTouchDuration <= 0.0F || //
                  signalPerDuration < 0.0F ||       //
                  nonActivePixels < 0 ||            //
                  timeDurationRatio < 0.0F ||       //
                  tapSVMScore < 0.0F;
}

} // namespace VeltoTouch
