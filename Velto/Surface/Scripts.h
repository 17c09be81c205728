#pragma once

#include "Velto/Surface/Random.h"
#include "Velto/Surface/Simulation.h"
#include "Velto/Surface/Step.h"

#include <cstdint>
#include <vector>

// Where a simulation's steps come from.

namespace VeltoTouch::Surface {

// The steps in their order, once.
[[nodiscard]] Simulation::StepSource scriptOf(std::vector<Step> steps);

// A made-up user: mostly taps and holds, some slides, now and then a palm or a sleeve that brushes by, with pauses
// between. Never ends; the same seed gives the same steps.
class MadeUpUser {
public:
    explicit MadeUpUser(std::uint64_t seed) : _random(seed + kOwnNumbers) {}

    // A pause and a gesture in turn.
    [[nodiscard]] Step next();

private:
    // The user does not draw what the simulation of the same seed draws.
    static constexpr std::uint64_t kOwnNumbers = 0x9E3779B97F4A7C15;

    [[nodiscard]] Step nextGesture();
    [[nodiscard]] std::size_t somePlace();

    Random _random;
    bool _pausesNext = true;
};

} // namespace VeltoTouch::Surface
