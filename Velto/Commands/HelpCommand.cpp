#include "Velto/Commands/Command.h"
#include "Velto/Options/Suggestion.h"
#include "Velto/Output/Files.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace VeltoTouch::Velto {
namespace {

constexpr const char* kHelpText = "Shows what velto COMMAND --help shows, or velto --help.";

void requireCommand(const CLI::App& program, const std::string& name) {
    const std::vector<std::string> names = commandNames(program);
    if (std::ranges::find(names, name) == names.end())
        throw CLI::ValidationError(unknown("command", name, names));
}

int help(const App& program, const std::string& command) {
    writeStandardOutput(
        command.empty() ? program.get_formatter()->make_help(&program, program.get_name(), CLI::AppFormatMode::Normal)
                        : program.get_subcommand(command)->help(program.get_name()));
    return 0;
}

} // namespace

Command makeHelpCommand(App& program) {
    const auto command = std::make_shared<std::string>();
    App* app = program.addCommand("help", {"velto help replay"}, kHelpText);
    const auto parse = [&program, command](const std::string& name) {
        requireCommand(program, name);
        *command = name;
    };
    CLI::Option* option = app->add_option_function<std::string>("COMMAND", parse, "A subcommand of velto");
    app->offer(option, {.words = commandNames(program), .openings = {}, .filePrefixes = {}, .patterns = {}})
        ->type_name("");
    return {app, [&program, command] { return help(program, *command); }};
}

} // namespace VeltoTouch::Velto
