#pragma once

#include "Velto/Options/App.h"

#include <functional>

// The subcommands of `velto`. Each `make...Command` adds its subcommand with options and help to the program and
// returns its runner, which owns the options. A runner returns the exit status: 0, or 1 if something failed and was
// reported on standard error, or kWrongUsage if only reading has shown that. The program reports an exception that
// leaves it. A command also needs its row in Program.cpp.

namespace VeltoTouch::Velto {

constexpr int kWrongUsage = 2;

struct Command {
    App* app;
    std::function<int()> run;
};

[[nodiscard]] Command makeReplayCommand(App& program);
[[nodiscard]] Command makeConvertCommand(App& program);
[[nodiscard]] Command makeTrimCommand(App& program);
[[nodiscard]] Command makeRenderCommand(App& program);
[[nodiscard]] Command makeInfoCommand(App& program);
[[nodiscard]] Command makeSimulateCommand(App& program);
[[nodiscard]] Command makeLabelCommand(App& program);
[[nodiscard]] Command makeExplainCommand(App& program);
[[nodiscard]] Command makeScoreCommand(App& program);
[[nodiscard]] Command makeCompareCommand(App& program);
[[nodiscard]] Command makeTuneCommand(App& program);
[[nodiscard]] Command makePlotCommand(App& program);
[[nodiscard]] Command makeStatsCommand(App& program);
[[nodiscard]] Command makeRecoverCommand(App& program);
[[nodiscard]] Command makeExportCommand(App& program);
[[nodiscard]] Command makeRunCommand(App& program);
[[nodiscard]] Command makeViewCommand(App& program);
[[nodiscard]] Command makeDumpCommand(App& program);
[[nodiscard]] Command makeCaptureCommand(App& program);
[[nodiscard]] Command makeCollectCommand(App& program);
[[nodiscard]] Command makeDevicesCommand(App& program);
[[nodiscard]] Command makeDoctorCommand(App& program);
[[nodiscard]] Command makeServeCommand(App& program);
[[nodiscard]] Command makeGetCommand(App& program);
[[nodiscard]] Command makeSetCommand(App& program);
[[nodiscard]] Command makeWatchCommand(App& program);
[[nodiscard]] Command makeRecordCommand(App& program);
// Added last: it completes the other commands' names.
[[nodiscard]] Command makeHelpCommand(App& program);

} // namespace VeltoTouch::Velto
