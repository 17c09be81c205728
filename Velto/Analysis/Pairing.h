#pragma once

#include "Velto/Analysis/Label.h"
#include "Velto/Analysis/Touch.h"

#include <cstdint>
#include <vector>

// Which touch belongs to what. Any thread; what is returned points into the lists that were given.

namespace VeltoTouch::Analysis {

// Returns the touch that overlaps a span of time most, the earlier of equals; null if none does. Touching at a point
// counts.
[[nodiscard]] const Touch* touchThatOverlapsMost(const std::vector<Touch>& touches, std::uint64_t startNs,
                                                 std::uint64_t endNs);

// Pairs labels and touches one to one by the overlap of the touch with the label's window, widened by 50 ms before and
// 150 ms after: largest overlap first, then by label, then by touch. The window of a spoiled label is its own time
// alone. Returns for each label its touch, null if it has none. Both lists are in time order.
[[nodiscard]] std::vector<const Touch*> pair(const std::vector<Label>& labels, const std::vector<Touch>& touches);

// The other way round: for each touch its label, null if it has none. A touch that no label was paired with and that is
// in the time of a spoiled one has that one: several touches may have the same.
[[nodiscard]] std::vector<const Label*> labelsByTouch(const std::vector<Label>& labels,
                                                      const std::vector<Touch>& touches);

} // namespace VeltoTouch::Analysis
