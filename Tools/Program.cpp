#include "Tools/Program.h"

#include "Tools/Description.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <string>

#include <fmt/format.h>

namespace VeltoTouch::Tools {
namespace {

constexpr const char* kDescription = "Example:\n"
                                     "  velto simulate tap:play-pause hold:volume-up -o gestures.json\n"
                                     "  velto replay gestures.json\n\n"
                                     "Records, replays and inspects the touches of a fifteen-pad surface.";

// In the order of the help.
constexpr std::array kCommands{makeReplayCommand, makeConvertCommand,  makeTrimCommand, makeRenderCommand,
                               makeInfoCommand,   makeSimulateCommand, makeRunCommand,  makeDevicesCommand,
                               makeServeCommand,  makeGetCommand,      makeSetCommand,  makeWatchCommand,
                               makeRecordCommand};

// Help begins with an example; the list of subcommands shows what comes behind it.
class HelpFormatter final : public CLI::Formatter {
public:
    std::string make_subcommand(const CLI::App* subcommand) const override {
        const std::string text = parseDescription(subcommand->get_description()).text;
        std::stringstream line;
        CLI::detail::format_help(line, subcommand->get_name(), text, get_column_width());
        return line.str();
    }
    // Which options go with which, the messages say.
    std::string make_option_opts(const CLI::Option* option) const override {
        const std::string text = CLI::Formatter::make_option_opts(option);
        return text.substr(0, std::min(text.find(" Needs:"), text.find(" Excludes:")));
    }
};

// One line that says what is wrong, and where to look.
std::string usageMessage(const CLI::App* program, const CLI::Error& error) {
    const std::vector<std::string> unknown = program->remaining();
    const std::string what = unknown.empty() ? error.what() : "nothing here is called " + unknown.front();
    return fmt::format("velto: {} (velto --help says more)\n", what);
}

} // namespace

Program makeProgram() {
    Program program{.app = std::make_unique<CLI::App>(kDescription, "velto"), .commands = {}};
    program.app->formatter(std::make_shared<HelpFormatter>());
    program.app->failure_message(usageMessage);
    program.app->require_subcommand(1);
    for (const auto makeCommand : kCommands)
        program.commands.push_back(makeCommand(*program.app));
    return program;
}

} // namespace VeltoTouch::Tools
