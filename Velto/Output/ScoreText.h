#pragma once

#include "Velto/Analysis/Score.h"

#include <string>

// Scores for people.

namespace VeltoTouch::Velto {

// A line for each label of a recording that went wrong and each stray, in the order of their starts; empty if nothing
// did.
[[nodiscard]] std::string faultLines(const Analysis::RecordingScore& recording);

// A table kind by region if there are labels, and what users feel: false gestures per hour and the delay of the
// decision.
[[nodiscard]] std::string totalText(const Analysis::ScoreTotal& total);

} // namespace VeltoTouch::Velto
