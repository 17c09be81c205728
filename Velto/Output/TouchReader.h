#pragma once

#include "Velto/Analysis/Label.h"
#include "Velto/Analysis/Touch.h"

#include <optional>
#include <string>
#include <string_view>

// Reads the touches of velto explain --jsonl again.

namespace VeltoTouch::Velto {

// Of the touch: number, times, outcome, events, region, and the check that failed.
struct ReadTouch {
    std::string file;
    Analysis::Touch touch;
    std::optional<Analysis::Label> label;
};

// Returns nothing for a weak contact. Throws std::invalid_argument for what is no line of velto explain.
[[nodiscard]] std::optional<ReadTouch> readTouchLine(std::string_view line);

} // namespace VeltoTouch::Velto
