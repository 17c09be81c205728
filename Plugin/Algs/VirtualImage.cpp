#include "Plugin/Algs/VirtualImage.h"

#include <bit>

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

// Each group's pads as bits.
constexpr auto kGroupPads = [] {
    std::array<std::uint32_t, kGroupCount> pads{};
    for (std::size_t i = 0; i < kGroupCount; ++i) {
        for (const char letter : kGroups[i].name)
            pads[i] |= 1U << padOf(letter);
    }
    return pads;
}();

} // namespace

VirtualImage::VirtualImage() noexcept {
    for (std::size_t i = 0; i < kGroupCount; ++i) {
        names[i] = kGroups[i].name;
        maxPixelIndex[i] = static_cast<std::int32_t>(padOf(kGroups[i].name.front()));
        normalizationFactors[i] = kGroups[i].factor;
    }
}

void VirtualImage::updateValues(const Pixels& pixels) noexcept {
    std::uint32_t strongPads = 0;
    for (std::size_t pad = 0; pad < kPadCount; ++pad)
        strongPads |= static_cast<std::uint32_t>(pixels.aboveNoise[pad]) << pad;
    values.fill(0);
    if (strongPads == 0)
        return;
    for (std::size_t i = 0; i < kGroupCount; ++i) {
        // Bits come in pad order, which is the order of the letters in every name.
        for (std::uint32_t pads = kGroupPads[i] & strongPads; pads != 0; pads &= pads - 1) {
            const auto pad = std::countr_zero(pads);
            const std::int32_t value = pixels.value[static_cast<std::size_t>(pad)];
            values[i] += value;
            if (value > pixels.value[static_cast<std::size_t>(maxPixelIndex[i])])
                maxPixelIndex[i] = pad;
        }
    }
}

} // namespace VeltoTouch
