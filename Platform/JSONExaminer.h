#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace VeltoTouch::JSON {

// Where a text stops being JSON, and why.
struct Fault {
    std::size_t byte;  // its offset; the size of a text that ends too early
    const char* cause; // "expected a value"
};

// Why the parser refuses a text: the first fault, or, if there is none, integers that it does not read because they
// have more than 64 bits.
struct Examination {
    std::optional<Fault> fault;
    std::string readableText; // without a fault: the same text, with those integers written as doubles
};

// Walks through the text byte by byte. Accepts what the parser accepts, and those integers too. Throws std::bad_alloc.
// Any thread.
[[nodiscard]] Examination examine(std::string_view text);

} // namespace VeltoTouch::JSON
