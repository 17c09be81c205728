#pragma once

#include <cstdint>

namespace VeltoTouch {

// The regions of the surface; the number is what gesture events carry.
enum class PixelRegion : std::int32_t { None = 0, PlayPause = 1, VolumeDown = 2, VolumeUp = 3 };

constexpr std::size_t kRegionCount = 4;

// The region of a pad; None for an index that is no pad's (a new virtual pixel has one).
[[nodiscard]] constexpr PixelRegion regionOfPad(std::int32_t pad) noexcept {
    constexpr std::uint32_t kVolumeUpPads = 0x3C0;    // G H I J
    constexpr std::uint32_t kVolumeDownPads = 0x7800; // L M N O
    constexpr std::uint32_t kPlayPausePads = 0x43F;   // A B C D E F K
    if (pad < 0 || pad > 14)
        return PixelRegion::None;
    const std::uint32_t bit = 1U << static_cast<unsigned>(pad);
    if ((bit & kVolumeUpPads) != 0)
        return PixelRegion::VolumeUp;
    if ((bit & kVolumeDownPads) != 0)
        return PixelRegion::VolumeDown;
    if ((bit & kPlayPausePads) != 0)
        return PixelRegion::PlayPause;
    return PixelRegion::None;
}

} // namespace VeltoTouch
