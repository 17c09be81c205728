#pragma once

#include "Plugin/Algs/PixelBank.h"

namespace VeltoTouch {

// The touch classifier: a linear support-vector machine that scores every frame. Its features are the
// frame's 38 pixel values ranked from largest to smallest, so that the score depends on the shape of the value
// profile and not on which pad carries which value. A frame with nothing to judge scores 0.
class SVM {
public:
    // Scores the frame from its updated pixels. `threshold` is the activation threshold, below which a lone
    // strongest value is nothing to judge; the frame time is not used.
    void updateSVMScore(const Pixels& pixels, const VirtualPixels& virtualPixels, float threshold,
                        std::uint32_t timeMs) noexcept;

    // The score of the last frame; 0 before the first.
    [[nodiscard]] float getSVMScore() const noexcept { return score; }

    // By rank, 0 being the frame's largest value: each is (value - mean) / stdDev * weight in the sum.
    static constexpr std::size_t kRankCount = kPadCount + kGroupCount;
    using ByRank = std::array<float, kRankCount>;
    static const ByRank means;
    static const ByRank stdDevs;
    static const ByRank weights;
    static constexpr float bias = 2.0083F;

    // Returns the frame's values from largest to smallest, as the score reads them.
    using RankedValues = std::array<std::int32_t, kRankCount>;
    [[nodiscard]] static RankedValues rankedValues(const Pixels& pixels, const VirtualPixels& virtualPixels) noexcept;

    float score = 0; // of the last frame
};

} // namespace VeltoTouch
