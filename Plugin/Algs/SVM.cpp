#include "Plugin/Algs/SVM.h"

#include <algorithm>
#include <numeric>

namespace VeltoTouch {
namespace {

constexpr std::size_t kRankCount = SVM::kRankCount;

struct Rank {
    float mean;
    float stdDev;
    float weight;
};

// Rank 0 is the largest pixel value of the frame.
constexpr std::array<Rank, kRankCount> kRanks{{
    // mean   stdDev     weight
    {559.2485F, 319.631F, 2.0791F},   // 0
    {458.1396F, 264.2479F, 0.577F},   // 1
    {409.6764F, 238.355F, -0.0003F},  // 2
    {376.5288F, 222.3886F, 1.7971F},  // 3
    {339.7854F, 211.1872F, 0.8896F},  // 4
    {302.5308F, 206.0873F, -0.194F},  // 5
    {281.1469F, 198.0056F, -1.7877F}, // 6
    {258.9062F, 189.2092F, 1.9933F},  // 7
    {234.2004F, 182.5528F, 0.5968F},  // 8
    {215.7817F, 177.034F, -0.6801F},  // 9
    {199.7768F, 170.0103F, -0.1372F}, // 10
    {184.8617F, 163.5788F, -0.4558F}, // 11
    {172.0251F, 157.3571F, 0.3444F},  // 12
    {160.0365F, 151.1289F, 0.1195F},  // 13
    {148.0888F, 144.6578F, 0.2427F},  // 14
    {135.208F, 138.2757F, 0.2738F},   // 15
    {124.4527F, 131.4855F, -0.7458F}, // 16
    {114.4343F, 124.7151F, -0.2226F}, // 17
    {104.0568F, 116.673F, -0.95F},    // 18
    {93.4508F, 107.0524F, -0.238F},   // 19
    {83.6343F, 98.8414F, 0.0785F},    // 20
    {74.3161F, 91.5114F, -1.6108F},   // 21
    {65.3713F, 84.5376F, -0.4774F},   // 22
    {57.6177F, 78.8144F, 0.3914F},    // 23
    {50.8842F, 72.6408F, -0.0379F},   // 24
    {43.4918F, 64.3881F, -0.5014F},   // 25
    {37.2454F, 58.6809F, 0.2391F},    // 26
    {31.5491F, 51.8691F, 0.5287F},    // 27
    {26.5578F, 45.1187F, -0.3405F},   // 28
    {22.2556F, 39.4927F, 0.2821F},    // 29
    {18.6728F, 35.9957F, 0.8225F},    // 30
    {15.4697F, 32.8257F, -0.5142F},   // 31
    {12.7815F, 29.4461F, -1.1009F},   // 32
    {10.1925F, 25.6704F, 0.3262F},    // 33
    {7.6475F, 20.1275F, -1.7422F},    // 34
    {5.3422F, 15.8161F, 0.4487F},     // 35
    {3.7211F, 11.7617F, 0.0877F},     // 36
    {2.1581F, 10.0508F, -0.2101F},    // 37
}};

constexpr SVM::ByRank column(float Rank::*field) noexcept {
    SVM::ByRank values{};
    for (std::size_t k = 0; k < kRankCount; ++k)
        values[k] = kRanks[k].*field;
    return values;
}

// Whole vectors; what lies beyond the last value ranks behind it.
constexpr std::size_t kLanes = (kRankCount + 3) / 4 * 4;
using Values = std::array<std::int32_t, kLanes>;

Values valuesOf(const Pixels& pixels, const VirtualPixels& virtualPixels) noexcept {
    static constexpr std::int32_t kBehindAll = -(1 << 20); // below every value; it passes no test for worth
    Values values;
    values.fill(kBehindAll);
    std::copy_n(pixels.value.begin(), kPadCount, values.begin());
    std::copy_n(virtualPixels.value.begin(), kGroupCount, values.begin() + kPadCount);
    return values;
}

// Values from largest to smallest. Each value's rank is the number of values before it, counted for all of them at
// once: a comparison sort would spend most of a frame's time on mispredicted branches. A key is unique, since it ends
// with the place of its value, and fits its type: values stay below 2^17.
Values ranked(const Values& values) noexcept {
    Values keys;
    for (std::size_t i = 0; i < kLanes; ++i)
        keys[i] = values[i] * 64 - static_cast<std::int32_t>(i);
    Values ranks;
    for (std::size_t i = 0; i < kLanes; ++i)
        ranks[i] = keys[0] > keys[i] ? 1 : 0;
    for (std::size_t k = 1; k < kRankCount; ++k) {
        for (std::size_t i = 0; i < kLanes; ++i)
            ranks[i] += keys[k] > keys[i] ? 1 : 0;
    }
    Values sorted;
    for (std::size_t i = 0; i < kRankCount; ++i)
        sorted[static_cast<std::size_t>(ranks[i])] = values[i];
    return sorted;
}

// Whether there is anything to judge: a value above the threshold, or two above the noise floor.
bool isWorthJudging(const Values& values, float threshold) noexcept {
    std::int32_t largest = values[0];
    std::int32_t aboveNoise = 0;
    for (const std::int32_t value : values) {
        largest = value > largest ? value : largest;
        aboveNoise += value > kNoiseFloor ? 1 : 0;
    }
    return static_cast<float>(largest) > threshold || aboveNoise >= 2;
}

} // namespace

// Columns of the table, so that the terms of all ranks are computed at once.
constexpr SVM::ByRank SVM::means = column(&Rank::mean);
constexpr SVM::ByRank SVM::stdDevs = column(&Rank::stdDev);
constexpr SVM::ByRank SVM::weights = column(&Rank::weight);

SVM::RankedValues SVM::rankedValues(const Pixels& pixels, const VirtualPixels& virtualPixels) noexcept {
    RankedValues values;
    std::copy_n(ranked(valuesOf(pixels, virtualPixels)).begin(), kRankCount, values.begin());
    return values;
}

void SVM::updateSVMScore(const Pixels& pixels, const VirtualPixels& virtualPixels, float threshold,
                         std::uint32_t /*timeMs*/) noexcept {
    const Values values = valuesOf(pixels, virtualPixels);
    score = 0;
    if (!isWorthJudging(values, threshold))
        return;

    const Values sorted = ranked(values);
    ByRank terms;
    for (std::size_t k = 0; k < kRankCount; ++k) // the division before the multiplication
        terms[k] = (static_cast<float>(sorted[k]) - means[k]) / stdDevs[k] * weights[k];
    // The order of the sum is part of the result: rank 0 first.
    score = bias + std::accumulate(terms.begin(), terms.end(), 0.0F);
}

} // namespace VeltoTouch
