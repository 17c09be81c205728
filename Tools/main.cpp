#include "Tools/Command.h"
#include "Tools/Files.h"
#include "Tools/Terminal.h"

#include <array>
#include <csignal>

namespace {

using namespace VeltoTouch::Tools;

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

} // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN); // a closed pipe is met where it is written to
    CLI::App program("Example:\n"
                     "  velto simulate tap:play-pause hold:volume-up -o gestures.json\n"
                     "  velto replay gestures.json\n\n"
                     "Records, replays and inspects the touches of a fifteen-pad surface.",
                     "velto");
    program.require_subcommand(1);
    const std::array commands{makeReplayCommand(program), makeConvertCommand(program), makeTrimCommand(program),
                              makeRenderCommand(program), makeInfoCommand(program)};
    try {
        program.parse(argc, argv);
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
