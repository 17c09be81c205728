#pragma once

#include "Plugin/Algs/PixelBank.h"

namespace VeltoTouch {

// Sums of the pad values over fixed groups of neighbouring pads, so that a finger between pads is seen as
// strongly as one on a pad.
struct VirtualImage {
    // Positions of the two groups that the region rules look at.
    static constexpr std::size_t kIJK = 18;
    static constexpr std::size_t kKLM = 19;

    VirtualImage() noexcept;

    std::array<std::int32_t, kGroupCount> values{};        // sums of this frame
    std::array<std::string_view, kGroupCount> names{};     // a group's name lists its pads
    std::array<std::int32_t, kGroupCount> maxPixelIndex{}; // dominant pads
    std::array<float, kGroupCount> normalizationFactors{};

    // Recomputes the sums from the updated pixels. Pads at or below the noise floor add nothing and cannot
    // become dominant. A group's dominant pad is carried over from frame to frame: it is displaced only by a pad whose
    // value is strictly greater.
    void updateValues(const Pixels& pixels) noexcept;
};

} // namespace VeltoTouch
