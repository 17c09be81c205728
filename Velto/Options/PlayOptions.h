#pragma once

#include <limits>
#include <string>

#include <CLI/CLI.hpp>

// Options that the commands share that play something.

namespace VeltoTouch::Velto {

// --speed N|max: a factor on the pace, above 0; max is infinity.
void addSpeed(CLI::App& app, float& target, const std::string& description);

constexpr double kForever = std::numeric_limits<double>::infinity();

// --duration S: seconds above 0. Unset, the target stays as it is.
CLI::Option* addDuration(CLI::App& app, double& target);

} // namespace VeltoTouch::Velto
