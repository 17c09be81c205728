#pragma once

#include <array>
#include <cstddef>
#include <span>

// Where the pads of the simulated surface lie and how much of a contact each of them feels.

namespace VeltoTouch::Surface {

// A point of the round surface seen from above: x to the right, y upward, the origin in the middle. The outermost pads
// lie 15 away from it.
struct Position {
    double x;
    double y;
};

[[nodiscard]] constexpr double squaredDistance(Position a, Position b) noexcept {
    return (a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y);
}

// One plate of a pad. Eight pads have two plates, on opposite sides of the surface; both feed the pad's signal.
struct Place {
    std::size_t pad;
    Position position;
};

constexpr std::size_t kPlaceCount = 23;

// All plates, those of one pad next to each other, in pad order.
[[nodiscard]] const std::array<Place, kPlaceCount>& places() noexcept;
// The one or two plates of a pad (below kPadCount).
[[nodiscard]] std::span<const Place> placesOf(std::size_t pad) noexcept;

// The signal counts that a pad gives for one count of contact strength.
[[nodiscard]] double sensitivityOf(std::size_t pad) noexcept;

} // namespace VeltoTouch::Surface
