#pragma once

#include "Plugin/Algs/Pixel.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace VeltoTouch {

// The states of a row of pixels, one array a field: a frame updates all of them at once, which is most of what
// recognition costs. What a pixel is and how it changes is `Pixel`'s; this is its layout. Flags are as wide as the
// values for the same reason.
template <std::size_t Count>
class PixelBank {
public:
    // Whole vectors; the lanes beyond the last pixel have gain 0 and stay off.
    static constexpr std::size_t kLanes = (Count + 3) / 4 * 4;
    template <class T>
    using Lanes = std::array<T, kLanes>;

    PixelBank(const std::array<float, Count>& gains, const std::array<std::int32_t, Count>& indices) noexcept {
        std::copy(gains.begin(), gains.end(), gain.begin());
        std::copy(indices.begin(), indices.end(), index.begin());
    }

    // A copy of one pixel's state.
    [[nodiscard]] Pixel operator[](std::size_t i) const noexcept {
        Pixel pixel(index[i], gain[i]);
        pixel.value = value[i];
        pixel.normalized = normalized[i];
        pixel.onPeak = onPeak[i];
        pixel.offTrough = offTrough[i];
        pixel.on = on[i] != 0;
        pixel.aboveNoise = aboveNoise[i] != 0;
        pixel.everAboveNoise = everAboveNoise[i] != 0;
        pixel.everOn = everOn[i] != 0;
        pixel.peakAboveNoise = peakAboveNoise[i];
        return pixel;
    }

    // Calls `Pixel::updatePixelState` for every pixel. Signals beyond the last pixel must be 0.
    void updatePixelStates(const Lanes<std::int32_t>& signals, float threshold) noexcept {
        for (std::size_t i = 0; i < kLanes; ++i) {
            Pixel pixel = (*this)[i];
            pixel.updatePixelState(signals[i], threshold);
            value[i] = pixel.value;
            normalized[i] = pixel.normalized;
            onPeak[i] = pixel.onPeak;
            offTrough[i] = pixel.offTrough;
            on[i] = pixel.on ? 1 : 0;
            aboveNoise[i] = pixel.aboveNoise ? 1 : 0;
            everAboveNoise[i] = pixel.everAboveNoise ? 1 : 0;
            everOn[i] = pixel.everOn ? 1 : 0;
            peakAboveNoise[i] = pixel.peakAboveNoise;
        }
    }

    // Forgets the touch that has ended.
    void resetGlobalStats() noexcept {
        everAboveNoise.fill(0);
        everOn.fill(0);
        peakAboveNoise.fill(0);
    }

    // See the fields of Pixel; flags are 0 or 1.
    alignas(16) Lanes<std::int32_t> value{};
    Lanes<float> gain{};
    Lanes<float> normalized{};
    Lanes<float> onPeak{};
    Lanes<float> offTrough{};
    Lanes<std::int32_t> on{};
    Lanes<std::int32_t> aboveNoise{};
    Lanes<std::int32_t> everAboveNoise{};
    Lanes<std::int32_t> everOn{};
    Lanes<float> peakAboveNoise{};
    Lanes<std::int32_t> index{};
};

constexpr std::size_t kGroupCount = 23;

// The pads.
using Pixels = PixelBank<kPadCount>;

// The groups of pads.
class VirtualPixels : public PixelBank<kGroupCount> {
public:
    VirtualPixels(const std::array<float, kGroupCount>& gains, const std::array<std::int32_t, kGroupCount>& indices,
                  const std::array<std::string_view, kGroupCount>& groupNames) noexcept
        : PixelBank(gains, indices), names(groupNames) {}

    [[nodiscard]] VirtualPixel operator[](std::size_t i) const noexcept { return {PixelBank::operator[](i), names[i]}; }

    // Calls `VirtualPixel::updatePixelState` for every group.
    void updatePixelStates(const Lanes<std::int32_t>& sums, float threshold,
                           const std::array<std::int32_t, kGroupCount>& dominantPads) noexcept {
        PixelBank::updatePixelStates(sums, threshold);
        std::copy(dominantPads.begin(), dominantPads.end(), index.begin());
    }

    std::array<std::string_view, kGroupCount> names;
};

} // namespace VeltoTouch
