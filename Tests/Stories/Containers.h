#pragma once

#include "Tests/Stories/Choices.h"

#include <string>

namespace VeltoTouch::Tests {

// The text of a recording container of any version that may be damaged: members dropped, doubled, renamed or of
// another type, reports' texts in odd forms, bytes changed, cut out, put in.
[[nodiscard]] std::string tellContainer(Choices& choices);

} // namespace VeltoTouch::Tests
