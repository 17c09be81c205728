#pragma once

#include "Velto/Host/HostTime.h"
#include "Velto/Options/App.h"

#include <chrono>
#include <optional>
#include <string>

// Options of the commands that play something.

namespace VeltoTouch::Velto {

// --speed N|max: a factor on the pace, above 0; max is infinity.
void addSpeed(App& app, float& target, const std::string& description);

// Reads seconds from 0 to 1e9, to the nearest nanosecond. Anything else is wrong usage, reported under `name`.
[[nodiscard]] HostTime parseSeconds(const std::string& name, const std::string& text);

// An option whose value is a time or a span in seconds.
template <class Time> // HostTime, or one that is optional
CLI::Option* addSeconds(App& app, const std::string& name, Time& target, const std::string& description) {
    const auto parse = [&target, name](const std::string& text) { target = parseSeconds(name, text); };
    return app.add_option_function<std::string>(name, parse, description)->type_name("S");
}

// --duration S: seconds above 0. The target is empty if it is not given or longer than 31 years.
CLI::Option* addDuration(App& app, std::optional<std::chrono::microseconds>& target);

} // namespace VeltoTouch::Velto
