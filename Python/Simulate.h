#pragma once

#include "Python/Recording.h"
#include "Velto/Surface/Simulation.h"

#include <cstdint>
#include <string>
#include <vector>

namespace VeltoTouch::Python {

// Returns the recording that velto simulate writes for the same steps and options. `madeUpGestures` of a made-up user
// stand behind the steps. Throws std::invalid_argument for a step or an option, std::length_error for a script that is
// too long. Any thread, without the interpreter lock.
[[nodiscard]] Recording simulate(const std::vector<std::string>& steps, const Surface::Simulation::Options& options,
                                 std::uint32_t madeUpGestures);

} // namespace VeltoTouch::Python
