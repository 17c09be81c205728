#pragma once

#include "Python/Recording.h"
#include "Python/Source.h"
#include "Velto/Analysis/Setting.h"

#include <string>
#include <string_view>
#include <vector>

// Scores as lines of velto score --jsonl: of one recording, and the line of all. Any thread, without the interpreter
// lock.

namespace VeltoTouch::Python {

[[nodiscard]] std::string scoreLines(const Recording& recording, const std::vector<Analysis::Setting>& settings);

// The same of one that is read first. If it cannot be, its line says why.
[[nodiscard]] std::string scoreLines(const Source& source, const std::vector<Analysis::Setting>& settings);

// Returns the line of all recordings whose lines are given. Throws std::invalid_argument for other lines.
[[nodiscard]] std::string totalLine(std::string_view lines);

} // namespace VeltoTouch::Python
