#pragma once

#include <string>

#include <CLI/CLI.hpp>

namespace VeltoTouch::Velto::Manual {

// Scripts that complete the program's command line.
[[nodiscard]] std::string bashCompletion(const CLI::App& program); // for the package bash-completion
[[nodiscard]] std::string zshCompletion(const CLI::App& program);

} // namespace VeltoTouch::Velto::Manual
