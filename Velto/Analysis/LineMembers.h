#pragma once

#include <optional>
#include <string>

#include <fmt/format.h>

// Values of members in a line of JSON.

namespace VeltoTouch::Analysis {

// Returns the number or truth value, or null for nothing.
template <class T>
[[nodiscard]] std::string orNull(const std::optional<T>& value) {
    return value ? fmt::format("{}", *value) : "null";
}

// Returns "NAME", or null for nothing.
template <class Named>
[[nodiscard]] std::string nameOrNull(const std::optional<Named>& value) {
    return value ? fmt::format("\"{}\"", nameOf(*value)) : "null";
}

} // namespace VeltoTouch::Analysis
