#pragma once

#include "Python/Recording.h"
#include "Velto/Analysis/Setting.h"

#include <string>
#include <string_view>
#include <vector>

// Scores as lines of velto score --jsonl: of one recording, and the line of all. Any thread, without the interpreter
// lock.

namespace VeltoTouch::Python {

[[nodiscard]] std::string scoreLines(const Recording& recording, const std::vector<Analysis::Setting>& settings);

// Of a recording that could not be read.
[[nodiscard]] std::string failedLine(const std::string& file, const std::string& message);

// Returns the line of all recordings whose lines are given. Throws std::invalid_argument for other lines.
[[nodiscard]] std::string totalLine(std::string_view lines);

} // namespace VeltoTouch::Python
