#pragma once

#include "Velto/Surface/Random.h"
#include "Velto/Surface/Simulation.h"
#include "Velto/Surface/Step.h"

#include <cstdint>
#include <string>
#include <vector>

// Where a simulation's steps come from.

namespace VeltoTouch::Surface {

inline constexpr std::uint32_t kMostMadeUp = 5'000; // gestures that a recording at the usual rate has room for

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

// The steps that these texts say (Step.h), and behind them as many gestures of a made-up user, with pauses. Throws
// std::invalid_argument for a text that is no step.
[[nodiscard]] std::vector<Step> scriptFor(const std::vector<std::string>& steps, std::uint64_t seed,
                                          std::uint32_t madeUpGestures);

} // namespace VeltoTouch::Surface
