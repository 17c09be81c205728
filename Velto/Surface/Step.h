#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

// Gesture scripts: what the fingers do on the simulated surface, one step after the other.
//
//   tap:WHERE[:MS]          a short press                                              100 ms
//   hold:WHERE[:MS]         a long press                                               900 ms
//   slide:WHERE-WHERE[:MS]  a press that rests, rolls over to another place and rests  1200 ms
//   palm[:MS]               a palm laid over the middle                                1000 ms
//   brush:WHERE[:MS]        a contact too weak to be a press                           400 ms
//   idle[:MS]               nothing                                                    300 ms
//   reset                   the controller's firmware restarts
//
// WHERE is play-pause, volume-up, volume-down or a pad, A to O. MS is how long the contact lasts, press and lift
// included. After every contact the surface is left alone for a moment, without an `idle` step too.

namespace VeltoTouch::Surface {

enum class Action : std::uint8_t { Tap, Hold, Slide, Palm, Brush, Idle, Reset };

constexpr std::uint32_t kLongestStepMs = 3'600'000;

struct Step {
    Action action = Action::Idle;
    std::uint32_t durationMs = 0; // 1 to kLongestStepMs; 0 for a reset
    std::size_t pad = 0;          // where; of a region, its middle pad. Unused by palm, idle and reset
    std::size_t endPad = 0;       // where a slide ends; otherwise `pad`

    friend bool operator==(const Step&, const Step&) = default;
};

// Reads one step. Throws std::invalid_argument with a line that names the step and what is wrong with it.
[[nodiscard]] Step parseStep(std::string_view text);

// The word that a step of this action begins with.
[[nodiscard]] std::string_view nameOf(Action action) noexcept;

} // namespace VeltoTouch::Surface
