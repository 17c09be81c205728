#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Gesture scripts: what the fingers do on the simulated surface, one step after the other. A step is a name and what it
// takes, with colons between: tap:WHERE[:MS], slide:WHERE-WHERE[:MS], palm[:MS], reset. WHERE is a region or a pad. MS
// is how long the contact lasts, press and lift included. After every contact the surface is left alone for a moment,
// without an `idle` step too.

namespace VeltoTouch::Surface {

enum class Action : std::uint8_t { Tap, Hold, Slide, Palm, Brush, Idle, Reset };

enum class Takes : std::uint8_t { Nothing, Duration, Place, TwoPlaces }; // a place may have a duration behind it

struct StepForm {
    Action action;
    std::string_view name;
    Takes takes;
    std::uint32_t defaultMs;
    std::string_view meaning;
};

// In the order of the actions; what is no contact of a hand comes last.
inline constexpr std::array<StepForm, 7> kStepForms{{
    {Action::Tap, "tap", Takes::Place, 100, "a short press"},
    {Action::Hold, "hold", Takes::Place, 900, "a long press"},
    {Action::Slide, "slide", Takes::TwoPlaces, 1200, "a press that rests, rolls over to another place and rests"},
    {Action::Palm, "palm", Takes::Duration, 1000, "a palm laid over the middle"},
    {Action::Brush, "brush", Takes::Place, 400, "a contact too weak to be a press"},
    {Action::Idle, "idle", Takes::Duration, 300, "nothing"},
    {Action::Reset, "reset", Takes::Nothing, 0, "the controller's firmware restarts"},
}};

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
[[nodiscard]] constexpr std::string_view nameOf(Action action) noexcept {
    return kStepForms[static_cast<std::size_t>(action)].name;
}

// Whether a hand does it: all but idle and reset.
[[nodiscard]] constexpr bool isGesture(Action action) noexcept { return action < Action::Idle; }

// The regions as a step names them: "play-pause, volume-up, volume-down".
[[nodiscard]] std::string regionPlaces();

} // namespace VeltoTouch::Surface
