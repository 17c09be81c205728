#pragma once

#include "Velto/Analysis/Tuning.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace VeltoTouch::Page {

// A sweep as people read it.
struct Axis {
    std::string key = {};
    std::vector<std::string> values = {}; // in their order
    std::string present = {};
    std::optional<std::size_t> presentPlace = {}; // among the values, if it is one of them
};

// Returns a page of a grid of settings: its costs as a map, its front, and the cost on others. `text` is a
// sentence a line.
[[nodiscard]] std::string tuningPage(const std::vector<Axis>& axes, const Analysis::Tuned& tuned,
                                     const std::string& text);

} // namespace VeltoTouch::Page
