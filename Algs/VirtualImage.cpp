#include "Algs/VirtualImage.h"

#include <algorithm>

namespace VeltoTouch {
namespace {

struct Group {
    std::string_view name;
    float factor;
};

constexpr std::array<Group, kGroupCount> kGroups{{
    {"ABE", 0.6667F},  // 0
    {"ABF", 0.4444F},  // 1
    {"ADEF", 0.6667F}, // 2
    {"AEGJ", 0.5714F}, // 3
    {"BCEF", 0.6667F}, // 4
    {"BFHJ", 0.5714F}, // 5
    {"CDE", 0.6667F},  // 6
    {"CDF", 0.4651F},  // 7
    {"CELN", 0.6667F}, // 8
    {"DFLO", 0.6667F}, // 9
    {"EFK", 0.4F},     // 10
    {"EJK", 0.4F},     // 11
    {"EKL", 0.4F},     // 12
    {"FJK", 0.4F},     // 13
    {"FKL", 0.4F},     // 14
    {"GHI", 0.5714F},  // 15
    {"GIJ", 0.4F},     // 16
    {"HIJ", 0.4F},     // 17
    {"IJK", 0.4F},     // 18
    {"KLM", 0.4F},     // 19
    {"LMN", 0.4444F},  // 20
    {"LMO", 0.5714F},  // 21
    {"MNO", 0.6667F},  // 22
}};
static_assert(kGroups[VirtualImage::kIJK].name == "IJK" && kGroups[VirtualImage::kKLM].name == "KLM");

constexpr std::int32_t padOf(char letter) noexcept { return letter - 'A'; }

} // namespace

VirtualImage::VirtualImage() noexcept {
    for (std::size_t i = 0; i < kGroupCount; ++i) {
        names[i] = kGroups[i].name;
        maxPixelIndex[i] = padOf(kGroups[i].name.front());
        normalizationFactors[i] = kGroups[i].factor;
    }
}

void VirtualImage::updateValues(const Pixels& pixels) noexcept {
    values.fill(0);
    if (std::ranges::none_of(pixels, &Pixel::aboveNoise))
        return;
    for (std::size_t i = 0; i < kGroupCount; ++i) {
        for (const char letter : kGroups[i].name) {
            const std::int32_t pad = padOf(letter);
            const std::int32_t value = pixels[static_cast<std::size_t>(pad)].value;
            if (value <= kNoiseFloor)
                continue;
            values[i] += value;
            if (value > pixels[static_cast<std::size_t>(maxPixelIndex[i])].value)
                maxPixelIndex[i] = pad;
        }
    }
}

} // namespace VeltoTouch
