#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

// The command line's options and arguments, in the order of the help.

namespace VeltoTouch::Velto::Manual {

[[nodiscard]] std::vector<const CLI::Option*> optionsOf(const CLI::App& app);   // with a dash
[[nodiscard]] std::vector<const CLI::Option*> argumentsOf(const CLI::App& app); // without

[[nodiscard]] std::vector<std::string> namesOf(const CLI::Option& option); // "-h", "--help"
[[nodiscard]] std::string typeOf(const CLI::Option& option);               // "FILE", "N|max"; empty for a flag
[[nodiscard]] bool isRepeated(const CLI::Option& option);                  // it may be given more than once

} // namespace VeltoTouch::Velto::Manual
