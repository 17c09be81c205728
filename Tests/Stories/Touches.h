#pragma once

#include "Tests/Stories/Story.h"

#include <string>

namespace VeltoTouch::Tests {

struct TouchesCheck {
    std::string fault; // empty if there is none
    int cancels = 0;   // cancelled touches that were turned round
};

// Records a story and checks what analysis says of its touches: every event of the pipeline belongs to a touch; outcome
// and events agree; were every failed check of a cancelled touch turned round, it would have been a gesture; and for up
// to `mostAlternatives` touches, a replay with each setting that would have made them something else agrees.
[[nodiscard]] TouchesCheck checkTouches(const Story& story, std::size_t mostAlternatives);

} // namespace VeltoTouch::Tests
