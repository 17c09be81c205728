#pragma once

#include <algorithm>
#include <cctype>
#include <string>
#include <string_view>

#include <CLI/CLI.hpp>

namespace VeltoTouch::Velto::Manual {

// Quotes a word for both shells, if it needs quotes.
[[nodiscard]] inline std::string quoted(const std::string& word) {
    const auto isPlain = [](char character) {
        return std::isalnum(static_cast<unsigned char>(character)) != 0 ||
               std::string_view("-_.,:/").find(character) != std::string_view::npos;
    };
    if (!word.empty() && std::ranges::all_of(word, isPlain))
        return word;
    return "'" + CLI::detail::find_and_replace(word, "'", "'\\''") + "'";
}

} // namespace VeltoTouch::Velto::Manual
