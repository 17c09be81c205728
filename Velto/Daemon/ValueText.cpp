#include "Velto/Daemon/ValueText.h"

#include "Platform/JSON.h"

#include <variant>

#include <fmt/format.h>

namespace VeltoTouch {

std::string shortText(const Value* value) {
    const auto* number = as<Number>(value);
    if (number == nullptr || std::holds_alternative<bool>(number->content()) ||
        number->doubleValue() != static_cast<double>(number->floatValue()))
        return JSON::text(value);
    return fmt::format("{}", number->floatValue());
}

} // namespace VeltoTouch
