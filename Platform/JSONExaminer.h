#pragma once

#include "Platform/JSON.h"

#include <optional>
#include <string>
#include <string_view>

namespace VeltoTouch::JSON {

// What is the matter with a text that the parser refuses: the first fault, or, if there is none, integers that the
// parser does not read because they have more than 64 bits.
struct Examination {
    std::optional<Fault> fault;
    std::string readableText; // without a fault: the same text, with those integers written as doubles
};

// Walks through the text byte by byte. Reads what the parser reads, and those integers.
[[nodiscard]] Examination examine(std::string_view text);

} // namespace VeltoTouch::JSON
