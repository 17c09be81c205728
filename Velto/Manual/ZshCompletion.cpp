#include "Velto/Manual/CommandLine.h"
#include "Velto/Manual/Completions.h"
#include "Velto/Manual/Quoted.h"

#include <algorithm>
#include <cctype>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace VeltoTouch::Velto::Manual {
namespace {

constexpr const char* kZshHead =
    "#compdef velto\n# Completion of velto for zsh. Made from the program's own description.\n";

constexpr const char* kZshTail = R"(
if [[ $funcstack[1] == _velto ]]; then
    _velto "$@"
else
    compdef _velto velto # the file was sourced
fi
)";

// With a backslash before each of the characters, and before each backslash.
std::string masked(const std::string& text, std::string_view characters) {
    std::string result;
    for (const char character : text) {
        if (character == '\\' || characters.find(character) != std::string_view::npos)
            result += '\\';
        result += character;
    }
    return result;
}

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words)
        text += " " + quoted(word);
    return text;
}

// A function that offers the candidates.
std::string valueFunction(const std::string& name, const std::string& type, const Candidates& candidates) {
    std::string words = joined(candidates.words);
    for (const std::string& pattern : candidates.patterns)
        words += " " + pattern + "(N)";
    std::string openings = joined(candidates.openings);
    std::string body;
    std::string files;
    for (const std::string& prefix : candidates.filePrefixes) {
        if (prefix.empty()) {
            files = "    _files && ret=0\n";
            continue;
        }
        openings += " " + quoted(prefix);
        body += fmt::format("    if compset -P {}; then\n        _files\n        return\n    fi\n", quoted(prefix));
    }
    body += "    local expl ret=1\n";
    const std::string offer = fmt::format("    _wanted values expl {} compadd", quoted(type));
    if (!words.empty())
        body += fmt::format("{} --{} && ret=0\n", offer, words);
    if (!openings.empty())
        body += fmt::format("{} -S '' --{} && ret=0\n", offer, openings);
    return fmt::format("\n{}() {{\n{}{}    return ret\n}}\n", name, body, files);
}

// What _arguments is told of each option and argument, and the functions that this names.
struct Arguments {
    std::string functions;
    std::string lines;
};

// ":TYPE:ACTION", where the action is a blank for what may be anything.
std::string valueOf(Arguments& made, const std::string& prefix, const App& app, const CLI::Option& option) {
    const std::string type = typeOf(option);
    const Candidates candidates = app.candidatesFor(option);
    const bool areTerms = !candidates.openings.empty() || !candidates.patterns.empty();
    std::string action = " ";
    if (candidates.filePrefixes == std::vector<std::string>{""} && candidates.words.empty() && !areTerms) {
        action = "_files";
    } else if (!candidates.filePrefixes.empty() || !candidates.words.empty() || areTerms) {
        action = prefix + "_" + option.get_single_name();
        std::ranges::replace_if(
            action, [](unsigned char character) { return std::isalnum(character) == 0; }, '_');
        made.functions += valueFunction(action, type, candidates);
    }
    return fmt::format(":{}:{}", masked(type, ":"), action);
}

void addOption(Arguments& made, const std::string& prefix, const App& app, const CLI::Option& option) {
    const std::vector<std::string> names = namesOf(option);
    const bool isFlag = typeOf(option).empty();
    const std::string rest =
        "[" + masked(option.get_description(), "[]") + "]" + (isFlag ? "" : valueOf(made, prefix, app, option));
    const std::string others = isRepeated(option) ? "*" : fmt::format("({})", fmt::join(names, " "));
    for (const std::string& name : names) {
        const char* const join = isFlag ? "" : name.starts_with("--") ? "=" : "+"; // --speed=N or --speed N; -oOUT
        made.lines += fmt::format(" \\\n        {}", quoted(others + name + join + rest));
    }
}

Arguments argumentsFor(const std::string& prefix, const App& app) {
    Arguments made;
    for (const CLI::Option* option : optionsOf(app))
        addOption(made, prefix, app, *option);
    for (const CLI::Option* argument : argumentsOf(app))
        made.lines += fmt::format(" \\\n        {}",
                                  quoted((isRepeated(*argument) ? "*" : "") + valueOf(made, prefix, app, *argument)));
    return made;
}

std::string commandFunction(const App& command) {
    const std::string name = "_velto_" + command.get_name();
    const Arguments made = argumentsFor(name, command);
    return fmt::format("{}\n{}() {{\n    _arguments{}\n}}\n", made.functions, name, made.lines);
}

std::string programFunction(const App& program) {
    const Arguments made = argumentsFor("_velto", program);
    std::string commands;
    for (const App* command : program.commands())
        commands += fmt::format("            {}\n", quoted(command->get_name() + ":" + masked(command->summary(), "")));
    return fmt::format(R"({}
_velto() {{
    local curcontext=$curcontext state line
    typeset -A opt_args
    _arguments -C{} \
        ':SUBCOMMAND:->command' '*::argument:->arguments' && return
    case $state in
    command)
        local -a commands=(
{}        )
        _describe -t commands SUBCOMMAND commands
        ;;
    arguments)
        curcontext="${{curcontext%:*:*}}:velto-$line[1]:"
        (( $+functions[_velto_$line[1]] )) && _velto_$line[1]
        ;;
    esac
}}
)",
                       made.functions, made.lines, commands);
}

} // namespace

std::string zshCompletion(const App& program) {
    std::string script = kZshHead;
    for (const App* command : program.commands())
        script += commandFunction(*command);
    return script + programFunction(program) + kZshTail;
}

} // namespace VeltoTouch::Velto::Manual
