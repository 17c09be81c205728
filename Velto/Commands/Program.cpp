#include "Velto/Commands/Program.h"

#include "Velto/Options/Suggestion.h"

#include <array>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

struct CommandRow {
    const char* purpose;
    Command (*make)(App& program);
};

// In the order of the help, by what they are for.
constexpr std::array kCommands{
    CommandRow{"Recordings", makeReplayCommand},    //
    CommandRow{"Recordings", makeConvertCommand},   //
    CommandRow{"Recordings", makeTrimCommand},      //
    CommandRow{"Recordings", makeRenderCommand},    //
    CommandRow{"Recordings", makeInfoCommand},      //
    CommandRow{"Recordings", makeSimulateCommand},  //
    CommandRow{"Recordings", makeLabelCommand},     //
    CommandRow{"Why", makeExplainCommand},          //
    CommandRow{"Why", makeScoreCommand},            //
    CommandRow{"Why", makeCompareCommand},          //
    CommandRow{"Why", makeTuneCommand},             //
    CommandRow{"Why", makePlotCommand},             //
    CommandRow{"Why", makeStatsCommand},            //
    CommandRow{"Why", makeRecoverCommand},          //
    CommandRow{"Why", makeExportCommand},           //
    CommandRow{"Live", makeRunCommand},             //
    CommandRow{"Live", makeViewCommand},            //
    CommandRow{"Live", makeDumpCommand},            //
    CommandRow{"Live", makeCaptureCommand},         //
    CommandRow{"Live", makeCollectCommand},         //
    CommandRow{"This machine", makeDevicesCommand}, //
    CommandRow{"This machine", makeDoctorCommand},  //
    CommandRow{"This machine", makeServeCommand},   //
    CommandRow{"This machine", makeGetCommand},     //
    CommandRow{"This machine", makeSetCommand},     //
    CommandRow{"This machine", makeWatchCommand},   //
    CommandRow{"This machine", makeRecordCommand},  //
    CommandRow{"Help", makeHelpCommand},            //
};

std::vector<std::string> optionNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    }
    return names;
}

// What is wrong with an argument that nothing takes.
std::string messageFor(const std::string& argument, const CLI::App& app) {
    if (argument.size() > 1 && argument.starts_with('-'))
        return unknown("option", argument.substr(0, argument.find('=')), optionNames(app));
    return app.get_parent() == nullptr ? unknown("command", argument, commandNames(app))
                                       : fmt::format("unexpected argument '{}'", argument);
}

// One line that says what is wrong, and where to look.
std::string usageMessage(const CLI::App* program, const CLI::Error& error) {
    const std::vector<CLI::App*> commands = program->get_subcommands();
    const CLI::App& app = commands.empty() ? *program : *commands.front();
    std::vector<std::string> left = app.remaining();
    std::erase(left, "--");
    const std::string message = left.empty() ? error.what() : messageFor(left.front(), app);
    const bool isOfProgram = app.get_parent() == nullptr || app.get_name() == "help"; // its words are the program's
    const std::string name = isOfProgram ? "" : " " + app.get_name();
    return fmt::format("velto: {} (velto{} --help says more)\n", message, name);
}

} // namespace

Program makeProgram() {
    Program program{.app = std::make_unique<App>(
                        "velto",
                        std::vector<std::string>{"velto simulate tap:play-pause hold:volume-up -o gestures.json",
                                                 "velto replay gestures.json"},
                        "Records, replays and inspects the touches of a fifteen-pad surface."),
                    .commands = {}};
    program.app->failure_message(usageMessage);
    program.app->set_version_flag("--version", "velto " VELTO_VERSION, "Print the version and exit");
    program.app->require_subcommand(1);
    for (const CommandRow& row : kCommands) {
        program.commands.push_back(row.make(*program.app));
        program.commands.back().app->group(row.purpose);
    }
    return program;
}

void parse(Program& program, std::vector<std::string> arguments) {
    try {
        program.app->parse(std::move(arguments));
    } catch (const CLI::Success&) { // --help and --version are seen before what nothing takes
        if (program.app->remaining_size() > 0)
            throw CLI::ExtrasError(program.app->get_name(), program.app->remaining());
        throw;
    }
}

} // namespace VeltoTouch::Velto
