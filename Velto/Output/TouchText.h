#pragma once

#include "Velto/Analysis/Label.h"
#include "Velto/Analysis/Pulls.h"
#include "Velto/Analysis/Touch.h"

#include <string>

// Touches for people.

namespace VeltoTouch::Velto {

// One line: number, time, duration, region, outcome and its reason, what was meant (null: not known).
[[nodiscard]] std::string touchHeading(const Analysis::Touch& touch, const Analysis::Label* label);

// The outcome and its reason: "cancel, because of the tap score".
[[nodiscard]] std::string verdictText(const Analysis::Touch& touch);

// Below it, a line a check, then the way of the region if it moved, how a touch was cut short, and what it would be
// with other settings.
[[nodiscard]] std::string touchDetails(const Analysis::Touch& touch, const Analysis::Typicals& typicals);

[[nodiscard]] std::string weakText(const Analysis::WeakContact& contact);

} // namespace VeltoTouch::Velto
