#include "Velto/Commands/ProgramRun.h"

#include "Velto/Commands/Program.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"

#include <csignal>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace VeltoTouch::Velto {
namespace {

constexpr int kFailed = 1;

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

// The exit status that work returns, or that of its failure, which is reported.
template <class Work>
int statusOf(const Work& work) {
    try {
        return work();
    } catch (const ClosedPipe&) {
        return kFailed;
    } catch (const std::exception& error) {
        writeErrorLine("velto: " + messageOf(error));
        return kFailed;
    }
}

} // namespace

int runProgram(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN); // a closed pipe is met where it is written to
    Program program = makeProgram();
    try {
        parse(program, argumentsOf(argc, argv));
    } catch (const CLI::ParseError& error) {
        std::ostringstream shown;
        std::ostringstream complaint;
        if (program.app->exit(error, shown, complaint) == 0)
            return statusOf([&] {
                writeStandardOutput(shown.str());
                return 0;
            });
        const std::string text = complaint.str();
        writeErrorLine(text.substr(0, text.find_last_not_of('\n') + 1));
        return kWrongUsage;
    }
    return statusOf([&] {
        for (const Command& command : program.commands) {
            if (command.app->parsed())
                return command.run();
        }
        return kWrongUsage;
    });
}

} // namespace VeltoTouch::Velto
