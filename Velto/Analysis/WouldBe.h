#pragma once

#include "Velto/Analysis/Touch.h"
#include "Velto/Analysis/Track.h"

#include <vector>

namespace VeltoTouch::Analysis {

// Finds, for each of `touches`, the settings with which it would have had another outcome, and adds them to its
// `wouldBe`: one entry a setting at most, the value nearest to the one that was in force at the touch's start. Each is
// found and verified by playing the whole track with the value in force from the first frame, as
// `velto replay --set KEY=VALUE` does.
//
//   HoldTimeoutMilliseconds   computed from the touch, to the millisecond, and verified
//   ActivationThreshold       tried in steps of 2 %, rounded to three digits, between half and double
//   EnableHoldSuppression     turned round
//   EnableTapSuppression      turned round
//
// A setting that leaves no touch is listed only if no other alternative is found. Unfinished touches are left as they
// are. `settings` are those that the touches were found with. One play answers for all touches. Any thread.
void findAlternatives(const Track& track, const std::vector<Setting>& settings, const std::vector<Touch*>& touches);

} // namespace VeltoTouch::Analysis
