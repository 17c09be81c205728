#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

// The command line as its description tells it, in the order of the help.

namespace VeltoTouch::Velto::Manual {

[[nodiscard]] std::vector<const CLI::App*> subcommandsOf(const CLI::App& program);
[[nodiscard]] std::vector<const CLI::Option*> optionsOf(const CLI::App& app);   // with a dash
[[nodiscard]] std::vector<const CLI::Option*> argumentsOf(const CLI::App& app); // without

[[nodiscard]] std::vector<std::string> namesOf(const CLI::Option& option); // "-h", "--help"
[[nodiscard]] std::string typeOf(const CLI::Option& option);               // "FILE", "N|max"; empty for a flag
[[nodiscard]] bool isRepeated(const CLI::Option& option);                  // it may be given more than once

// What may stand for an argument or an option's value.
struct Candidates {
    std::vector<std::string> words;
    std::vector<std::string> openings;     // "sim:", behind which anything follows
    std::vector<std::string> filePrefixes; // "replay:", behind which a file's name follows; empty for a bare name
    std::vector<std::string> patterns;     // "/dev/hidraw*", of files that are there
};

// From the type: words in small letters stand for themselves, FILE, OUT and PATH for files, KEY and KEY=VALUE for the
// service's properties and settings, COMMAND for the program's subcommands, and one with a list at the
// end of the help (DEVICE with "Devices:") for that list's terms. A DEVICE without one is a node of the kernel's.
[[nodiscard]] Candidates candidatesFor(const CLI::App& app, const CLI::Option& option);

} // namespace VeltoTouch::Velto::Manual
