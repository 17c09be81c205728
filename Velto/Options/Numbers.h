#pragma once

#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace VeltoTouch::Velto {

// Returns the number that all of a text is, in decimal or, if it is whole, another base. Nothing for any other text,
// one with a plus sign among them, and for what the type cannot hold, an infinity among them.
template <class Number>
[[nodiscard]] std::optional<Number> numberIn(std::string_view text, [[maybe_unused]] int base = 10) {
    Number number = 0;
    const char* const end = text.data() + text.size();
    std::from_chars_result read{};
    if constexpr (std::is_floating_point_v<Number>)
        read = std::from_chars(text.data(), end, number);
    else
        read = std::from_chars(text.data(), end, number, base);
    const bool isRead = read.ec == std::errc() && read.ptr == end && std::isfinite(static_cast<double>(number));
    return isRead ? std::optional(number) : std::nullopt;
}

// An option whose value is a whole number in decimal, from `least` to `most`; anything else is wrong usage.
template <class Number>
CLI::Option* addNumber(CLI::App& app, const std::string& name, Number& target, const std::string& description,
                       Number least = 0, Number most = std::numeric_limits<Number>::max()) {
    const auto parse = [&target, name, least, most](const std::string& text) {
        const auto number = numberIn<Number>(text);
        if (!number || *number < least || *number > most)
            throw CLI::ValidationError(name, fmt::format("a whole number from {} to {} is wanted", least, most));
        target = *number;
    };
    return app.add_option_function<std::string>(name, parse, description)->type_name("N");
}

} // namespace VeltoTouch::Velto
