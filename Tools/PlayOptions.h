#pragma once

#include "Tools/Settings.h"

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

// Options that the commands share that play something.

namespace VeltoTouch::Tools {

// --speed N|max: a factor on the pace, above 0; max is infinity.
void addSpeed(CLI::App& app, float& target, const std::string& description);

// --set KEY=VALUE, any number of times.
void addSettings(CLI::App& app, std::vector<Setting>& target, const std::string& description);

} // namespace VeltoTouch::Tools
