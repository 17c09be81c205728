#pragma once

#include "Velto/Analysis/Comparison.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// What two plays of recordings make of the same touches, as JSON Lines and for people.

namespace VeltoTouch::Velto {

// By Change.
using ChangeCounts = std::array<std::uint64_t, Analysis::kChangeNames.size()>;

// Append a line for each touch that is not the same.
void appendChangeLines(std::string& text, std::string_view file, const std::vector<Analysis::ComparedTouch>& touches);
void appendChangeText(std::string& text, std::string_view file, const std::vector<Analysis::ComparedTouch>& touches);

// What their parts say: what was meant, and what a touch became; null: not known, or none.
[[nodiscard]] std::string meantText(const Analysis::Label* label, Analysis::Change change);
[[nodiscard]] std::string touchText(const Analysis::Touch* touch);

// What stands below them.
[[nodiscard]] std::string comparisonLine(const ChangeCounts& counts);
[[nodiscard]] std::string comparisonText(const ChangeCounts& counts);

} // namespace VeltoTouch::Velto
