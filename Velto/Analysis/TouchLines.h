#pragma once

#include "Velto/Analysis/Label.h"
#include "Velto/Analysis/Pulls.h"
#include "Velto/Analysis/Touch.h"

#include <string>
#include <string_view>

// Touches as JSON Lines.

namespace VeltoTouch::Analysis {

// Appends the line of a touch. `file` is the path as it was given; `label` is what was meant by the touch, null if that
// is not known.
void appendTouchLine(std::string& text, std::string_view file, const Touch& touch, const Label* label,
                     const Typicals& typicals);
void appendWeakLine(std::string& text, std::string_view file, const WeakContact& contact);

// Returns a label as an object, or null for nothing.
[[nodiscard]] std::string labelObject(const Label* label);

// Returns ,"NAME":NUMBER. A number that is not finite is null, with its text in a member `textName` beside it.
[[nodiscard]] std::string numberMember(std::string_view name, double number, std::string_view textName = "text");

} // namespace VeltoTouch::Analysis
