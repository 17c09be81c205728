#pragma once

#include "Velto/Analysis/Label.h"
#include "Velto/Analysis/Setting.h"
#include "Velto/Analysis/Track.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// Which settings a corpus of labelled recordings would want: every point of a grid is played over every recording.

namespace VeltoTouch::Analysis {

// The values that a setting is tried with, in their order.
struct Sweep {
    std::string key;
    std::vector<Ref<Value>> values;
};

// The points of a grid: every combination of the sweeps' values, the last sweep's value changing first. Each is a list
// of settings, one a sweep. A grid without sweeps has one point, without settings.
[[nodiscard]] std::vector<std::vector<Setting>> gridOf(const std::vector<Sweep>& sweeps);

// What went wrong with some settings.
struct Faults {
    std::uint64_t missed = 0;
    std::uint64_t wrong = 0; // of the wrong kind or in the wrong region
    std::uint64_t isFalse = 0;
    std::uint64_t stray = 0;

    [[nodiscard]] std::uint64_t cost() const noexcept { return missed + wrong + isFalse + stray; }
    Faults& operator+=(const Faults& other) noexcept;
    friend bool operator==(const Faults&, const Faults&) = default;
};

// A recording as it is tuned on: read once, played for every point.
struct LabelledTrack {
    Track track;
    std::vector<Label> labels;
};

// Returns the faults of a recording at each point, in their order. `present` are the settings that are in force at all
// points, but for the keys that a point sets itself.
[[nodiscard]] std::vector<Faults> faultsAt(const std::vector<std::vector<Setting>>& points,
                                           const std::vector<Setting>& present, const LabelledTrack& recording);

struct Tuned {
    std::vector<Faults> points; // over all recordings, in the grid's order
    // No other point is at least as good in missed, wrong and (false + stray), and better in one of them.
    std::vector<bool> isOnFront;
    std::optional<std::size_t> best; // place of the best point; none if the present settings are as good as any
    Faults present;
    // Cost of the recordings of each fold at the point that is best on the others, in sum; none without folds. The
    // present settings are chosen on nothing: their held-out cost is their cost. Nor is there one for one recording.
    std::optional<std::uint64_t> heldOutCost;
};

// Chooses the best point. `recordings` are the faults of each recording, its last element at the present settings,
// those before at the points. Recording i belongs to fold i modulo `folds`, so that fewer recordings are each a fold;
// fewer than 2 folds are none. Of equals the first point is best.
[[nodiscard]] Tuned tuned(const std::vector<std::vector<Faults>>& recordings, std::size_t folds);

} // namespace VeltoTouch::Analysis
