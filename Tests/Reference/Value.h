#pragma once
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
namespace VeltoTouch::Reference {
using json = nlohmann::json;
// An empty value is nil. The JSON null is an object of its own and not nil. Binary is data.
using Value = std::optional<json>;
// Booleans, integers and doubles are numbers; anything else, nil included, reads as the number 0.
inline json numberIn(const Value& value) {
    if (value && value->is_boolean())
        return json(value->get<bool>() ? 1 : 0);
    return value && value->is_number() ? *value : json(0);
}
inline bool boolReading(const Value& value) {
    const json number = numberIn(value);
    return number.is_number_float() ? number.get<double>() != 0.0 : number.get<std::uint64_t>() != 0;
}
// Converts from the kind that is stored, rounding once.
inline float floatReading(const Value& value) { return numberIn(value).get<float>(); }
inline std::uint64_t unsignedReading(const Value& value) {
    const json number = numberIn(value);
    if (!number.is_number_float())
        return number.get<std::uint64_t>(); // signed integers wrap
    const double real = number.get<double>();
    if (real >= 0.0)
        return real < 18446744073709551616.0 ? std::uint64_t(real) : UINT64_MAX;
    if (real < 0.0)
        return std::uint64_t(real > -9223372036854775808.0 ? std::int64_t(real) : INT64_MIN);
    return 0; // NaN
}
} // namespace VeltoTouch::Reference
