#pragma once

#include "Velto/Analysis/Tuning.h"
#include "Velto/Options/App.h"

#include <vector>

namespace VeltoTouch::Velto {

// --sweep KEY=FROM:TO:STEP|V,V..., any number of times: the values that a setting which changes recognition is tried
// with. Any other key, a value that the setting does not take and a sweep of more than 10,000 values are wrong usage.
void addSweeps(App& app, std::vector<Analysis::Sweep>& target);

} // namespace VeltoTouch::Velto
