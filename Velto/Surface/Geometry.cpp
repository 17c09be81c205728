#include "Velto/Surface/Geometry.h"

#include "Plugin/Reports/Regions.h"

#include <string_view>

namespace VeltoTouch::Surface {
namespace {

// A letter a plate. A column is one unit wide.
constexpr std::array<std::string_view, 13> kPicture{
    "          H         G          ", //
    "               I               ", //
    "    B                     A    ", //
    "        J             J        ", //
    "    F                     E    ", //
    "A                             B", //
    "               K               ", //
    "D                             C", //
    "    E                     F    ", //
    "        L             L        ", //
    "    C                     D    ", //
    "               M               ", //
    "          N         O          ", //
};
constexpr double kRowHeight = 2.39; // makes the picture round
constexpr double kMiddleColumn = 15;
constexpr double kMiddleRow = 6;

// The inverse of the gains that recognition evens the pads out with.
constexpr std::array<double, kPadCount> kSensitivity{
    // A     B      C      D      E      F      G      H      I      J      K      L      M      N      O
    0.520, 0.531, 0.519, 0.531, 0.522, 0.552, 0.992, 1.000, 0.673, 0.665, 0.414, 0.650, 0.648, 0.962, 0.953};

constexpr std::array<Place, kPlaceCount> readPicture() {
    std::array<Place, kPlaceCount> found{};
    std::size_t count = 0;
    for (std::size_t pad = 0; pad < kPadCount; ++pad) {
        for (std::size_t row = 0; row < kPicture.size(); ++row) {
            for (std::size_t column = 0; column < kPicture[row].size(); ++column) {
                if (padOf(kPicture[row][column]) == pad)
                    found[count++] = {.pad = pad,
                                      .position = {.x = static_cast<double>(column) - kMiddleColumn,
                                                   .y = (kMiddleRow - static_cast<double>(row)) * kRowHeight}};
            }
        }
    }
    return found;
}

constexpr std::array<Place, kPlaceCount> kPlaces = readPicture();

} // namespace

const std::array<Place, kPlaceCount>& places() noexcept { return kPlaces; }

std::span<const Place> placesOf(std::size_t pad) noexcept {
    std::size_t first = 0;
    while (kPlaces[first].pad != pad)
        ++first;
    const bool hasTwo = first + 1 < kPlaces.size() && kPlaces[first + 1].pad == pad;
    return std::span(kPlaces).subspan(first, hasTwo ? 2 : 1);
}

double sensitivityOf(std::size_t pad) noexcept { return kSensitivity[pad]; }

} // namespace VeltoTouch::Surface
