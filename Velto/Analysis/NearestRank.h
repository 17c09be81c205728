#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace VeltoTouch::Analysis {

// Returns the smallest of `values` that at least `percent` of them do not exceed. There is at least one value; their
// order changes. `percent` is 1 to 100.
template <class T>
[[nodiscard]] T nearestRank(std::vector<T>& values, std::size_t percent) {
    const std::size_t rank = (values.size() * percent + 99) / 100;
    const auto found = values.begin() + static_cast<std::ptrdiff_t>(rank - 1);
    std::ranges::nth_element(values, found);
    return *found;
}

} // namespace VeltoTouch::Analysis
