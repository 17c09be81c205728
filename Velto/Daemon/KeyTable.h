#pragma once

#include "Plugin/Reports/Regions.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include <linux/input-event-codes.h>

// Which key a gesture on a region presses. Keys have the kernel's numbers.

namespace VeltoTouch {

inline constexpr std::uint16_t kNoKey = KEY_RESERVED;

struct RegionKeys {
    std::uint16_t tap = kNoKey;
    std::uint16_t hold = kNoKey;

    [[nodiscard]] bool operator==(const RegionKeys& other) const noexcept = default;
};

// What a key is pressed for, and its name in the configuration.
using KeyUse = std::uint16_t RegionKeys::*;
struct KeyUseRow {
    KeyUse use;
    std::string_view name;
};
inline constexpr std::array<KeyUseRow, 2> kKeyUseRows{{{&RegionKeys::tap, "tap"}, {&RegionKeys::hold, "hold"}}};

[[nodiscard]] constexpr std::string_view nameOf(KeyUse use) noexcept {
    return std::ranges::find(kKeyUseRows, use, &KeyUseRow::use)->name;
}

// What a key can be configured for.
struct KeyPlace {
    KeyUse use;
    PixelRegion region;

    [[nodiscard]] bool operator==(const KeyPlace& other) const noexcept = default;
};
inline constexpr auto kKeyPlaces = [] {
    std::array<KeyPlace, kKeyUseRows.size() * kRegionsWithPads.size()> places{};
    auto place = places.begin();
    for (const KeyUseRow& row : kKeyUseRows) {
        for (const RegionRow& region : kRegionsWithPads)
            *place++ = {.use = row.use, .region = region.region};
    }
    return places;
}();

// By the region's number.
using KeyTable = std::array<RegionKeys, kRegionCount>;

[[nodiscard]] constexpr RegionKeys& keysOf(KeyTable& table, PixelRegion region) noexcept {
    return table[static_cast<std::size_t>(region)];
}
[[nodiscard]] constexpr const RegionKeys& keysOf(const KeyTable& table, PixelRegion region) noexcept {
    return table[static_cast<std::size_t>(region)];
}

[[nodiscard]] constexpr std::uint16_t keyAt(const KeyTable& table, const KeyPlace& place) noexcept {
    return keysOf(table, place.region).*place.use;
}

inline constexpr KeyTable kDefaultKeys = [] {
    KeyTable table;
    keysOf(table, PixelRegion::PlayPause) = {.tap = KEY_PLAYPAUSE, .hold = KEY_ASSISTANT};
    keysOf(table, PixelRegion::VolumeUp) = {.tap = KEY_VOLUMEUP, .hold = KEY_VOLUMEUP};
    keysOf(table, PixelRegion::VolumeDown) = {.tap = KEY_VOLUMEDOWN, .hold = KEY_VOLUMEDOWN};
    return table;
}();

// Each key of the table once.
[[nodiscard]] inline std::vector<std::uint16_t> keysIn(const KeyTable& table) {
    std::vector<std::uint16_t> keys;
    for (const RegionKeys& region : table) {
        for (const KeyUseRow& row : kKeyUseRows) {
            const std::uint16_t key = region.*row.use;
            if (key != kNoKey && std::ranges::count(keys, key) == 0)
                keys.push_back(key);
        }
    }
    return keys;
}

} // namespace VeltoTouch
