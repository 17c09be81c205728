#pragma once

#include <functional>

#include <CLI/CLI.hpp>

// The subcommands of `velto`. Each `make...Command` adds its subcommand with options and help to the program and
// gives what runs it; the options live as long as the runner. A runner returns the exit status: 0, or 1 when
// something failed and was told on standard error. An exception that leaves it is told by the program.

namespace VeltoTouch::Velto {

struct Command {
    CLI::App* app;
    std::function<int()> run;
};

[[nodiscard]] Command makeReplayCommand(CLI::App& program);
[[nodiscard]] Command makeConvertCommand(CLI::App& program);
[[nodiscard]] Command makeTrimCommand(CLI::App& program);
[[nodiscard]] Command makeRenderCommand(CLI::App& program);
[[nodiscard]] Command makeInfoCommand(CLI::App& program);
[[nodiscard]] Command makeSimulateCommand(CLI::App& program);
[[nodiscard]] Command makeRunCommand(CLI::App& program);
[[nodiscard]] Command makeDevicesCommand(CLI::App& program);
[[nodiscard]] Command makeServeCommand(CLI::App& program);
[[nodiscard]] Command makeGetCommand(CLI::App& program);
[[nodiscard]] Command makeSetCommand(CLI::App& program);
[[nodiscard]] Command makeWatchCommand(CLI::App& program);
[[nodiscard]] Command makeRecordCommand(CLI::App& program);
[[nodiscard]] Command makeHelpCommand(CLI::App& program);

} // namespace VeltoTouch::Velto
