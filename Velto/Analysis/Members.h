#pragma once

#include "Platform/Value.h"

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

// Reads the members of a JSON object; nothing if there is none of the name and kind.

namespace VeltoTouch::Analysis {

[[nodiscard]] inline std::optional<std::string> textUnder(const Dictionary& object, std::string_view name) {
    const auto* text = as<String>(object.find(name));
    return text != nullptr ? std::optional<std::string>(text->text()) : std::nullopt;
}

[[nodiscard]] inline const Number* numberUnder(const Dictionary& object, std::string_view name) {
    const auto* number = as<Number>(object.find(name));
    return number != nullptr && !number->isBool() ? number : nullptr;
}

[[nodiscard]] inline std::optional<std::uint64_t> unsignedUnder(const Dictionary& object, std::string_view name) {
    const Number* number = numberUnder(object, name);
    return number != nullptr ? std::optional<std::uint64_t>(number->unsignedLongLongValue()) : std::nullopt;
}

[[nodiscard]] inline std::optional<double> doubleUnder(const Dictionary& object, std::string_view name) {
    const Number* number = numberUnder(object, name);
    return number != nullptr ? std::optional(number->doubleValue()) : std::nullopt;
}

// A value of an enumeration that is named in a text; its names are those of 0 to `count` - 1.
template <class Named>
[[nodiscard]] std::optional<Named> valueUnder(const Dictionary& object, std::string_view name, std::size_t count) {
    const auto text = textUnder(object, name);
    for (std::size_t i = 0; text && i < count; ++i) {
        if (nameOf(static_cast<Named>(i)) == *text)
            return static_cast<Named>(i);
    }
    return std::nullopt;
}

// What a line needs to be one that a command printed with --jsonl.
struct LineOf {
    const char* command;

    // Returns the member. Throws std::invalid_argument if it is absent.
    template <class T>
    [[nodiscard]] T operator()(std::optional<T> member) const {
        if (!member)
            refuse();
        return *std::move(member);
    }

    [[noreturn]] void refuse() const { throw std::invalid_argument("no line of " + std::string(command) + " --jsonl"); }
};

} // namespace VeltoTouch::Analysis
