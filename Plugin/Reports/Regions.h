#pragma once

#include "Plugin/Reports/InputReport.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

// The regions of the surface: numbers, names and pads.

namespace VeltoTouch {

// The number is what gesture events carry.
enum class PixelRegion : std::int32_t { None = 0, PlayPause = 1, VolumeDown = 2, VolumeUp = 3 };

// A pad's number by its letter; for any other character a number that is no pad's.
[[nodiscard]] constexpr std::size_t padOf(char letter) noexcept { return static_cast<std::size_t>(letter - 'A'); }

// A pad's letter, of static lifetime.
[[nodiscard]] constexpr std::string_view letterOf(std::size_t pad) noexcept {
    constexpr std::string_view kLetters = "ABCDEFGHIJKLMNO";
    static_assert(kLetters.size() == kPadCount);
    return kLetters.substr(pad, 1);
}

struct RegionRow {
    PixelRegion region;
    std::string_view name;  // in lines, labels and signals of the message bus
    std::string_view place; // on the command line
    std::string_view pads;
    char middlePad;
};

// In the order in which people are shown them.
inline constexpr std::array<RegionRow, 4> kRegionRows{{
    {PixelRegion::None, "None", "", "", ' '},
    {PixelRegion::PlayPause, "PlayPause", "play-pause", "ABCDEFK", 'K'},
    {PixelRegion::VolumeUp, "VolumeUp", "volume-up", "GHIJ", 'I'},
    {PixelRegion::VolumeDown, "VolumeDown", "volume-down", "LMNO", 'M'},
}};
inline constexpr std::size_t kRegionCount = kRegionRows.size();

// Those that have pads.
inline constexpr std::span<const RegionRow, kRegionCount - 1> kRegionsWithPads = std::span(kRegionRows).subspan<1>();

// The region of a pad; None for an index that is no pad's (a new virtual pixel has one).
[[nodiscard]] constexpr PixelRegion regionOf(std::size_t pad) noexcept {
    constexpr auto kRegions = [] {
        std::array<PixelRegion, kPadCount> regions{};
        for (const RegionRow& row : kRegionRows) {
            for (const char letter : row.pads)
                regions[padOf(letter)] = row.region;
        }
        return regions;
    }();
    return pad < kPadCount ? kRegions[pad] : PixelRegion::None;
}
[[nodiscard]] constexpr PixelRegion regionOfPad(std::int32_t pad) noexcept {
    return regionOf(static_cast<std::uint32_t>(pad)); // a negative one is beyond all pads
}

[[nodiscard]] constexpr const RegionRow& rowOf(PixelRegion region) noexcept {
    return *std::ranges::find(kRegionRows, region, &RegionRow::region);
}
[[nodiscard]] constexpr std::string_view nameOf(PixelRegion region) noexcept { return rowOf(region).name; }

// The region with this name; none for any other.
[[nodiscard]] constexpr std::optional<PixelRegion> regionCalled(std::string_view name) noexcept {
    const auto* const row = std::ranges::find(kRegionRows, name, &RegionRow::name);
    return row == kRegionRows.end() ? std::nullopt : std::optional(row->region);
}

} // namespace VeltoTouch
