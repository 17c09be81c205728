#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace VeltoTouch::Analysis {

// How many of `count` values, in their order, make up `percent` of them at least.
template <class Count>
[[nodiscard]] constexpr Count nearestRank(Count count, Count percent) noexcept {
    return (count * percent + 99) / 100;
}

// Returns the smallest of `values` that at least `percent` of them do not exceed. There is at least one value; their
// order changes. `percent` is 1 to 100.
template <class T>
[[nodiscard]] T nearestRank(std::vector<T>& values, std::size_t percent) {
    const std::size_t rank = nearestRank(values.size(), percent);
    const auto found = values.begin() + static_cast<std::ptrdiff_t>(rank - 1);
    std::ranges::nth_element(values, found);
    return *found;
}

} // namespace VeltoTouch::Analysis
