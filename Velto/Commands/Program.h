#pragma once

#include "Velto/Commands/Command.h"

#include <memory>
#include <string>
#include <vector>

namespace VeltoTouch::Velto {

// `velto` with all its subcommands: what reads the command line, and what its help, manual pages and completions are
// made of.
struct Program {
    std::unique_ptr<App> app;
    std::vector<Command> commands; // in the order of the help
};

[[nodiscard]] Program makeProgram();

// Reads the arguments, last first, without the program's name. Throws CLI::ParseError: wrong usage, or CLI::Success
// for --help and --version.
void parse(Program& program, std::vector<std::string> arguments);

} // namespace VeltoTouch::Velto
