#pragma once

#include "Plugin/Algs/Algs.h"

#include <cstddef>
#include <string_view>

namespace VeltoTouch::Analysis {

// A pad's letter, of static lifetime.
[[nodiscard]] constexpr std::string_view letterOf(std::size_t pad) noexcept {
    constexpr std::string_view kLetters = "ABCDEFGHIJKLMNO";
    static_assert(kLetters.size() == kPadCount);
    return kLetters.substr(pad, 1);
}

// Returns the name of the first pixel that `isWanted(bank, index)` picks, a pad's letter or a group's name; pads come
// before groups. Empty if it picks none.
template <class IsWanted>
[[nodiscard]] std::string_view pixelWith(const Algs& algs, IsWanted isWanted) {
    for (std::size_t i = 0; i < kPadCount; ++i) {
        if (isWanted(algs.pixels, i))
            return letterOf(i);
    }
    for (std::size_t i = 0; i < kGroupCount; ++i) {
        if (isWanted(algs.virtualPixels, i))
            return algs.virtualPixels.names[i];
    }
    return {};
}

} // namespace VeltoTouch::Analysis
