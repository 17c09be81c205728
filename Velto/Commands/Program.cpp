#include "Velto/Commands/Program.h"

#include "Velto/Options/Description.h"
#include "Velto/Options/Suggestion.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <string>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

constexpr const char* kDescription = "Example:\n"
                                     "  velto simulate tap:play-pause hold:volume-up -o gestures.json\n"
                                     "  velto replay gestures.json\n\n"
                                     "Records, replays and inspects the touches of a fifteen-pad surface.";

// In the order of the help.
constexpr std::array kCommands{makeReplayCommand, makeConvertCommand,  makeTrimCommand, makeRenderCommand,
                               makeInfoCommand,   makeSimulateCommand, makeRunCommand,  makeDevicesCommand,
                               makeServeCommand,  makeGetCommand,      makeSetCommand,  makeWatchCommand,
                               makeRecordCommand, makeHelpCommand};

// Help begins with an example; the list of subcommands shows what comes behind it.
class HelpFormatter final : public CLI::Formatter {
public:
    std::string make_subcommand(const CLI::App* subcommand) const override {
        const std::string text = parseDescription(subcommand->get_description()).text;
        std::stringstream line;
        CLI::detail::format_help(line, subcommand->get_name(), text, get_column_width());
        return line.str();
    }
    // Which options go with which, the messages say. Dots stand where several values may follow.
    std::string make_option_opts(const CLI::Option* option) const override {
        const std::string text = CLI::Formatter::make_option_opts(option);
        const bool takesOne = option->nonpositional() && !option->get_allow_extra_args();
        return text.substr(0, std::min({text.find(" Needs:"), text.find(" Excludes:"),
                                        takesOne ? text.find(" ...") : std::string::npos}));
    }
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
    const std::string name = app.get_parent() == nullptr ? "" : " " + app.get_name();
    return fmt::format("velto: {} (velto{} --help says more)\n", message, name);
}

} // namespace

Program makeProgram() {
    Program program{.app = std::make_unique<CLI::App>(kDescription, "velto"), .commands = {}};
    program.app->formatter(std::make_shared<HelpFormatter>());
    program.app->failure_message(usageMessage);
    program.app->set_version_flag("--version", "velto " VELTO_VERSION, "Print the version and exit");
    program.app->require_subcommand(1);
    for (const auto makeCommand : kCommands)
        program.commands.push_back(makeCommand(*program.app));
    return program;
}

} // namespace VeltoTouch::Velto
