#include "Velto/Manual/CommandLine.h"
#include "Velto/Manual/Completions.h"
#include "Velto/Manual/Quoted.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace VeltoTouch::Velto::Manual {
namespace {

// Bash splits words at colons and equals signs; the package's functions put them together, and take the front up to
// a colon off again.
constexpr const char* kBashHead = R"(# Completion of velto for bash. Made from the program's own description.

# Offers words; behind a colon, a dot and an equals sign there is more to come. The value in KEY=VALUE may be anything.
_velto_words() {
    [[ $cur != *=* ]] || return
    local offered
    mapfile -t offered < <(compgen -W "$*" -- "$cur")
    COMPREPLY+=("${offered[@]}")
    if [[ ${#COMPREPLY[@]} == 1 && ${COMPREPLY[0]} == *[:.=] ]]; then
        compopt -o nospace
    fi
}

# Offers files where PREFIX stands already, and fails elsewhere.
_velto_files() { # PREFIX
    [[ $cur == "$1"* ]] || return
    cur=${cur#"$1"}
    _filedir
    [[ $COMP_WORDBREAKS == *:* ]] || COMPREPLY=("${COMPREPLY[@]/#/$1}")
}
)";

constexpr const char* kBashTail = R"(
_velto() {
    local cur prev words cword split
    _init_completion -s -n : || return

    local word command=
    for word in "${words[@]:1:cword - 1}"; do
        if [[ $word != -* ]]; then
            command=$word
            break
        fi
    done
    if [[ ! $command ]]; then
        _velto_program
    elif declare -F "_velto_command_$command" >/dev/null; then
        "_velto_command_$command"
    fi
    __ltrim_colon_completions "$cur"
} && complete -F _velto velto
)";

// Commands that offer the candidates; none where anything may follow.
std::string offer(const Candidates& candidates, const std::string& indent) {
    std::string words;
    for (const auto* list : {&candidates.words, &candidates.openings}) {
        for (const std::string& word : *list)
            words += " " + quoted(word);
    }
    std::string prefixedFiles;
    std::string files;
    for (const std::string& prefix : candidates.filePrefixes) {
        if (prefix.empty()) {
            files = fmt::format("{}_velto_files ''\n", indent);
            continue;
        }
        words += " " + quoted(prefix);
        prefixedFiles += fmt::format("{}_velto_files {} && return\n", indent, quoted(prefix));
    }
    for (const std::string& pattern : candidates.patterns)
        words += fmt::format(" $(compgen -G {})", quoted(pattern));
    if (!words.empty())
        words = fmt::format("{}_velto_words{}\n", indent, words);
    return prefixedFiles + words + files;
}

// A function that completes behind the program's or a subcommand's name. `arguments` offers what is no option.
std::string function(const std::string& name, const App& app, const std::string& arguments) {
    std::string options;
    std::string cases;
    std::string free; // those whose value may be anything
    for (const CLI::Option* option : optionsOf(app)) {
        const std::string pattern = fmt::format("{}", fmt::join(namesOf(*option), " | "));
        options += fmt::format(" {}", fmt::join(namesOf(*option), " "));
        if (typeOf(*option).empty())
            continue;
        const std::string values = offer(app.candidatesFor(*option), "            ");
        if (values.empty())
            free += (free.empty() ? "" : " | ") + pattern;
        else
            cases += fmt::format("        {})\n{}            ;;\n", pattern, values);
    }
    if (!free.empty())
        cases += fmt::format("        {}) ;;\n", free);
    const std::string behindNothing =
        arguments.empty() ? fmt::format("            _velto_words{}\n", options)
                          : fmt::format("            if [[ $cur == -* ]]; then\n                _velto_words{}\n"
                                        "            else\n{}            fi\n",
                                        options, arguments);
    return fmt::format("\n{}() {{\n    case $prev in\n{}        *)\n{}            ;;\n    esac\n}}\n", name, cases,
                       behindNothing);
}

} // namespace

std::string bashCompletion(const App& program) {
    std::string script = kBashHead;
    std::string commands;
    for (const App* command : program.commands()) {
        commands += " " + command->get_name();
        std::string arguments;
        for (const CLI::Option* argument : argumentsOf(*command))
            arguments += offer(command->candidatesFor(*argument), "                ");
        script += function("_velto_command_" + command->get_name(), *command, arguments);
    }
    return script + function("_velto_program", program, fmt::format("                _velto_words{}\n", commands)) +
           kBashTail;
}

} // namespace VeltoTouch::Velto::Manual
