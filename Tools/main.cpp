#include "Tools/Command.h"
#include "Tools/Files.h"
#include "Tools/Terminal.h"

#include <array>
#include <csignal>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <fmt/format.h>

namespace {

using namespace VeltoTouch::Tools;

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

// Help begins with an example; the list of subcommands shows what comes behind it.
class HelpFormatter final : public CLI::Formatter {
public:
    std::string make_subcommand(const CLI::App* subcommand) const override {
        std::string summary = subcommand->get_description();
        summary.erase(0, summary.rfind("\n\n") + 2);
        std::stringstream line;
        CLI::detail::format_help(line, subcommand->get_name(), summary, get_column_width());
        return line.str();
    }
};

// One line that says what is wrong, and where to look.
std::string usageMessage(const CLI::App* program, const CLI::Error& error) {
    const std::vector<std::string> unknown = program->remaining();
    const std::string what = unknown.empty() ? error.what() : "nothing here is called " + unknown.front();
    return fmt::format("velto: {} (velto --help says more)\n", what);
}

// The arguments without the program's name, last first, as the option parser wants them. It would split a file name in
// brackets; the same file in the folder "." it leaves alone.
std::vector<std::string> argumentsOf(int argc, char** argv) {
    std::vector<std::string> arguments(std::make_reverse_iterator(argv + argc), std::make_reverse_iterator(argv + 1));
    for (std::string& argument : arguments) {
        if (argument.starts_with('['))
            argument.insert(0, "./");
    }
    return arguments;
}

} // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN); // a closed pipe is met where it is written to
    CLI::App program("Example:\n"
                     "  velto simulate tap:play-pause hold:volume-up -o gestures.json\n"
                     "  velto replay gestures.json\n\n"
                     "Records, replays and inspects the touches of a fifteen-pad surface.",
                     "velto");
    program.formatter(std::make_shared<HelpFormatter>());
    program.failure_message(usageMessage);
    program.require_subcommand(1);
    const std::array commands{makeReplayCommand(program), makeConvertCommand(program), makeTrimCommand(program),
                              makeRenderCommand(program), makeInfoCommand(program),    makeSimulateCommand(program),
                              makeRunCommand(program),    makeServeCommand(program)};
    try {
        program.parse(argumentsOf(argc, argv));
    } catch (const CLI::ParseError& error) {
        return program.exit(error) == 0 ? 0 : kWrongUsage;
    }
    try {
        for (const Command& command : commands) {
            if (command.app->parsed())
                return command.run();
        }
    } catch (const ClosedPipe&) {
        return kFailed;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "velto: %s\n", messageOf(error).c_str());
        return kFailed;
    }
    return kWrongUsage;
}
