#pragma once

#include "Velto/Host/HostTime.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace VeltoTouch::Analysis {

// An interruption of the images.
struct Disturbance {
    enum class Kind : std::uint8_t { InvalidReport, Gap, Reset };

    Kind kind;
    HostTime time{};                             // since the start of playback
    std::optional<std::uint32_t> lastFrame = {}; // number of the image before it, if there is one
    std::uint32_t frame = 0;                     // of a gap: number of the image behind it
    std::span<const std::uint8_t> report = {};   // the invalid one
};

// Returns the name that lines, pages and options use.
[[nodiscard]] constexpr std::string_view nameOf(Disturbance::Kind kind) noexcept {
    constexpr std::array<std::string_view, 3> kNames{"invalid", "gap", "reset"};
    return kNames[static_cast<std::size_t>(kind)];
}

} // namespace VeltoTouch::Analysis
