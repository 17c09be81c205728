#pragma once

#include "Velto/Options/App.h"

#include <chrono>
#include <optional>
#include <string>

// Options of the commands that play something.

namespace VeltoTouch::Velto {

// --speed N|max: a factor on the pace, above 0; max is infinity.
void addSpeed(App& app, float& target, const std::string& description);

// An option whose value is a time of a recording: seconds from 0 to 1e9.
CLI::Option* addSeconds(App& app, const std::string& name, std::optional<double>& target,
                        const std::string& description);

// --duration S: seconds above 0. The target is empty if it is not given or longer than 31 years.
CLI::Option* addDuration(App& app, std::optional<std::chrono::microseconds>& target);

} // namespace VeltoTouch::Velto
