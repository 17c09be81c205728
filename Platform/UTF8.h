#pragma once

#include <cstddef>
#include <string_view>

namespace VeltoTouch::UTF8 {

// Returns the length of the well-formed UTF-8 sequence at the front of `text`, or 0.
[[nodiscard]] constexpr std::size_t sequenceLength(std::string_view text) noexcept {
    const auto byte = [text](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
    const auto isTail = [byte](std::size_t i) { return (byte(i) & 0xC0U) == 0x80U; };
    const unsigned first = byte(0);
    const unsigned second = byte(1);
    if (first < 0x80)
        return 1;
    if (first >= 0xC2 && first <= 0xDF)
        return isTail(1) ? 2 : 0;
    if (first >= 0xE0 && first <= 0xEF) {
        const bool overlong = first == 0xE0 && second < 0xA0;
        const bool surrogate = first == 0xED && second > 0x9F;
        return isTail(1) && isTail(2) && !overlong && !surrogate ? 3 : 0;
    }
    if (first >= 0xF0 && first <= 0xF4) {
        const bool overlong = first == 0xF0 && second < 0x90;
        const bool beyondUnicode = first == 0xF4 && second > 0x8F;
        return isTail(1) && isTail(2) && isTail(3) && !overlong && !beyondUnicode ? 4 : 0;
    }
    return 0;
}

} // namespace VeltoTouch::UTF8
