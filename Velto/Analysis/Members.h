#pragma once

#include "Platform/Value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Members of a JSON object; nothing if there is none of the name and kind.

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

} // namespace VeltoTouch::Analysis
