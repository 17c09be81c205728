#pragma once

#include <string_view>

namespace VeltoTouch::Surface {

// What may stand around and between the words of a line that people write.
inline constexpr std::string_view kBlanks = " \t\r";

[[nodiscard]] constexpr std::string_view trimmed(std::string_view text) noexcept {
    const auto first = text.find_first_not_of(kBlanks);
    return first == std::string_view::npos ? "" : text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

} // namespace VeltoTouch::Surface
