#pragma once

#include "Velto/Commands/Command.h"

#include <memory>
#include <vector>

namespace VeltoTouch::Velto {

// `velto` with all its subcommands: what reads the command line, and what its help, manual pages and completions are
// made of.
struct Program {
    std::unique_ptr<CLI::App> app;
    std::vector<Command> commands; // in the order of the help
};

[[nodiscard]] Program makeProgram();

} // namespace VeltoTouch::Velto
