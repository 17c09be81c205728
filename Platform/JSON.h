#pragma once

#include "Platform/Value.h"

#include <string>
#include <string_view>

// JSON text to values and back.
//
// Reading: text is UTF-8, checked; nesting is bounded (1024 levels, what stands in the innermost included); integers
// are exact from -2^63 to 2^64 - 1, larger ones are read as the nearest double, and a number beyond all doubles makes
// the text no JSON. Of equal keys in an object the last counts.
// Writing: compact, keys in byte order, doubles in their shortest form that reads back equal (always with
// a point or an exponent, so that they stay doubles).
// Any thread.

namespace VeltoTouch::JSON {

// Returns the value that `text` stands for; nil if it is no JSON. Throws std::bad_alloc, and std::runtime_error for 4
// GiB or more.
[[nodiscard]] Ref<Value> parse(std::string_view text);

// Appends the compact text of `value`; nil is written as null. A value that has no JSON form (data, infinities,
// NaN) becomes {"Unrepresentable":"<kind>"}, kind being data, infinity, -infinity or nan.
void append(std::string& text, const Value* value);

// Appends `string` quoted and escaped. Each byte that belongs to no well-formed UTF-8 sequence becomes U+FFFD.
void appendString(std::string& text, std::string_view string);

// Returns the same text.
[[nodiscard]] inline std::string quoted(std::string_view string) {
    std::string text;
    appendString(text, string);
    return text;
}

// Returns the compact text of `value`.
[[nodiscard]] std::string text(const Value* value);

// Returns a readable form of `value` for logs and people: indented JSON; nil is (null).
[[nodiscard]] std::string description(const Value* value);

} // namespace VeltoTouch::JSON
