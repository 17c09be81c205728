#pragma once

#include "Plugin/Reports/InputReport.h"
#include "Plugin/Reports/Regions.h"

#include <cstdint>
#include <string_view>

namespace VeltoTouch {

// A value up to this is noise; contacts are counted from one above it.
constexpr std::int32_t kNoiseFloor = 75;

// One pad's state. A pad turns on when its normalized value (its gain-scaled signal over the activation threshold)
// exceeds 1 and lies well above its lowest value since it went off; it stays on while the value exceeds 60 % of the
// highest value since it came on. A pad released to a high residual level therefore needs a proportionally
// higher signal to turn on again.
//
//   normalized   .    peak
//                .  /      \                      on  while > 0.6 * onPeak
//   1.0 ---------*----------\------------         off until > max(1.0, offTrough / 0.6)
//               /            \  off here
//   ___________/              \___________
struct Pixel {
    static constexpr float kHysteresis = 0.6F;

    constexpr Pixel(std::int32_t padIndex, float padGain) noexcept : gain(padGain), index(padIndex) {}

    std::int32_t value = 0;      // signal * gain of this frame, truncated toward zero
    float gain;                  // fixed at construction
    float normalized = 0;        // value / activation threshold
    float onPeak = 0;            // while on: highest normalized of the on period; while off: the current one
    float offTrough = 0;         // while off: lowest normalized of the off period; while on: the current one
    bool on = false;             // touched, with hysteresis
    bool aboveNoise = false;     // value above the noise floor in this frame
    bool everAboveNoise = false; // this and the next two describe the whole touch; see resetGlobalStats
    bool everOn = false;         //
    float peakAboveNoise = 0;    // highest normalized over the frames above the noise floor, 0 without any
    std::int32_t index;          // pad index; of a virtual pixel, its dominant pad

    // The normalized value that a pixel which is off must exceed to turn on.
    [[nodiscard]] static constexpr float activationLevel(float offTrough) noexcept {
        const float press = offTrough / kHysteresis;
        return press > 1.0F ? press : 1.0F;
    }

    // Takes in the signal of one frame. `threshold` is the activation threshold. Written as selections without
    // branches, so that a whole bank of pixels is updated at once.
    void updatePixelState(int signal, float threshold) noexcept {
        value = static_cast<std::int32_t>(static_cast<float>(signal) * gain);
        normalized = static_cast<float>(value) / threshold;
        const float release = onPeak * kHysteresis;
        const float level = on ? release : activationLevel(offTrough);
        on = normalized > level;
        const float highest = normalized > onPeak ? normalized : onPeak;
        const float lowest = normalized < offTrough ? normalized : offTrough;
        onPeak = on ? highest : normalized;
        offTrough = on ? normalized : lowest;
        everOn |= on;
        aboveNoise = value > kNoiseFloor;
        everAboveNoise |= aboveNoise;
        const float highestAboveNoise = normalized > peakAboveNoise ? normalized : peakAboveNoise;
        peakAboveNoise = aboveNoise ? highestAboveNoise : peakAboveNoise;
    }

    // The region of the pad. The recognizer itself, which has indices, calls regionOfPad.
    [[nodiscard]] PixelRegion getPixelRegion() const noexcept { return regionOfPad(index); }

    // Forgets the touch that has ended.
    void resetGlobalStats() noexcept {
        everAboveNoise = false;
        everOn = false;
        peakAboveNoise = 0;
    }
};

// The same state for the summed value of a group of pads. Its region is that of the group's dominant pad.
struct VirtualPixel : Pixel {
    constexpr VirtualPixel(std::int32_t padIndex, float groupGain, std::string_view groupName) noexcept
        : Pixel(padIndex, groupGain), name(groupName) {}
    constexpr VirtualPixel(const Pixel& state, std::string_view groupName) noexcept : Pixel(state), name(groupName) {}

    std::string_view name; // of static lifetime

    // Takes in the sum of one frame. The recognizer itself updates all groups at once (see VirtualPixels).
    void updatePixelState(int sum, float threshold, std::int32_t dominantPad) noexcept {
        Pixel::updatePixelState(sum, threshold);
        index = dominantPad;
    }
};

} // namespace VeltoTouch
