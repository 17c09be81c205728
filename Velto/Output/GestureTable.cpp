#include "Velto/Output/GestureTable.h"

#include <fmt/ranges.h>

namespace VeltoTouch::Velto {
namespace {

GestureTable::Row rowOf(const TouchGrouping::Touch& touch) {
    return {.name = std::string(nameOfEnd(touch.last)),
            .region = fmt::format("{}", fmt::join(touch.regions, " > ")),
            .frame = touch.frame,
            .start = touch.start,
            .end = touch.end};
}

} // namespace

std::optional<GestureTable::Row> GestureTable::add(const Gesture& gesture) {
    const auto ended = _touches.add(gesture);
    return ended ? std::optional(count(rowOf(*ended))) : std::nullopt;
}

std::optional<GestureTable::Row> GestureTable::finish(HostTime time) {
    auto hold = holdInProgress();
    if (!hold)
        return std::nullopt;
    hold->name = "hold, not ended";
    hold->end = time;
    return count(*hold);
}

std::optional<GestureTable::Row> GestureTable::holdInProgress() const {
    const auto* const hold = _touches.holdInProgress();
    return hold != nullptr ? std::optional(rowOf(*hold)) : std::nullopt;
}

GestureTable::Row GestureTable::count(Row row) {
    ++_counts[row.name][row.region];
    return row;
}

} // namespace VeltoTouch::Velto
