#pragma once

#include "Velto/Options/App.h"

#include <string>

namespace VeltoTouch::Velto::Manual {

// The release that a page belongs to.
struct Release {
    std::string version;
    std::string date; // year-month-day
};

// Manual pages of section 1: the program's, and one of its subcommands'.
[[nodiscard]] std::string programPage(const App& program, const Release& release);
[[nodiscard]] std::string commandPage(const App& program, const App& command, const Release& release);

} // namespace VeltoTouch::Velto::Manual
