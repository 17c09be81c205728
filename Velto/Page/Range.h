#pragma once

#include "Velto/Page/JSONText.h"

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace VeltoTouch::Page {

// Nanoseconds from the first frame; what lies outside is played and not shown.
struct Range {
    std::uint64_t fromNs = 0;
    std::uint64_t toNs = std::numeric_limits<std::uint64_t>::max();

    // Whether something of that time lies within.
    [[nodiscard]] bool holds(std::uint64_t startNs, std::uint64_t endNs) const noexcept {
        return endNs >= fromNs && startNs <= toNs;
    }
    friend bool operator==(const Range&, const Range&) = default;
};

// Something of a time, as JSON.
struct Item {
    std::uint64_t startNs = 0;
    std::uint64_t endNs = 0;
    std::string json;
};

// Those within a range, as an array.
[[nodiscard]] inline std::string arrayWithin(const Range& range, const std::vector<Item>& items) {
    return arrayOf(items, [&range](const Item& item) {
        return range.holds(item.startNs, item.endNs) ? item.json : std::string();
    });
}

} // namespace VeltoTouch::Page
