#include "Tools/Files.h"
#include "Tools/Program.h"
#include "Tools/Terminal.h"

#include <csignal>
#include <cstdio>
#include <iterator>
#include <string>
#include <vector>

namespace {

using namespace VeltoTouch::Tools;

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

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
    const Program program = makeProgram();
    try {
        program.app->parse(argumentsOf(argc, argv));
    } catch (const CLI::ParseError& error) {
        return program.app->exit(error) == 0 ? 0 : kWrongUsage;
    }
    try {
        for (const Command& command : program.commands) {
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
