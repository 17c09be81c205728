#pragma once

#include <charconv>
#include <limits>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace VeltoTouch::Velto {

// An option whose value is a whole number in decimal, from `least` to `most`; anything else is wrong usage.
template <class Number>
CLI::Option* addNumber(CLI::App& app, const std::string& name, Number& target, const std::string& description,
                       Number least = 0, Number most = std::numeric_limits<Number>::max()) {
    const auto parse = [&target, name, least, most](const std::string& text) {
        Number number = 0;
        const char* const end = text.data() + text.size();
        const auto [behind, error] = std::from_chars(text.data(), end, number);
        if (error != std::errc() || behind != end || number < least || number > most)
            throw CLI::ValidationError(name, fmt::format("a whole number from {} to {} is wanted", least, most));
        target = number;
    };
    return app.add_option_function<std::string>(name, parse, description)->type_name("N");
}

} // namespace VeltoTouch::Velto
