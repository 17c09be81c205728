#pragma once

#include "Velto/Analysis/Label.h"
#include "Velto/Analysis/Touch.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

// Compares two plays of a recording: which touches become something else.

namespace VeltoTouch::Analysis {

// What one play made of a recording.
struct LabelledTouches {
    std::vector<Touch> touches = {};               // in time order
    std::vector<std::optional<Label>> labels = {}; // by touch: what was meant by it
    bool isLabelled = false;                       // the recording has labels: by all other touches nothing was meant
};

// Pairs labels and touches (Pairing.h).
[[nodiscard]] LabelledTouches labelled(const std::vector<Label>& labels, std::vector<Touch> touches);

//   Fixed    the label's result (Score.h) became right: found or quiet; or a stray is no more
//   Broken   the result was right and no longer is; or a stray is new
//   Other    neither, but the outcome or the region is another
//
// A stray is a tap or hold without a label in a recording that has labels. So what was fixed less what was broken is
// the cost (Tuning.h) of the first play less that of the second.
enum class Change : std::uint8_t { Same, Fixed, Broken, Other };
inline constexpr std::array<std::string_view, 4> kChangeNames{"same", "fixed", "broken", "other"};
[[nodiscard]] constexpr std::string_view nameOf(Change change) noexcept {
    return kChangeNames[static_cast<std::size_t>(change)];
}

// The touches that were paired with a label, or a touch of the first play without a label and the touch of the second
// that overlaps it most. They point into what was compared.
struct ComparedTouch {
    Change change = Change::Same;
    const Label* label = nullptr; // what was meant; null if that is not known, or nothing
    const Touch* a = nullptr;     // null: the first play has no such touch
    const Touch* b = nullptr;
};

// Compares two plays of a recording, in time order: each label that has a touch in either, and each touch without one.
// Spoiled labels and their touches are left out. Labels of equal index are the same.
[[nodiscard]] std::vector<ComparedTouch> compare(const LabelledTouches& a, const LabelledTouches& b);

} // namespace VeltoTouch::Analysis
