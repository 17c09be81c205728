#pragma once

#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

#include <CLI/CLI.hpp>

// The command line with the data that help, manual pages and completions are made of.

namespace VeltoTouch::Velto {

// What may stand for an argument or an option's value.
struct Candidates {
    std::vector<std::string> words;
    std::vector<std::string> openings;     // "sim:", behind which anything follows
    std::vector<std::string> filePrefixes; // "replay:", behind which a file's name follows; empty for a bare name
    std::vector<std::string> patterns;     // "/dev/hidraw*", of files that are there
};
[[nodiscard]] Candidates fileNames();
[[nodiscard]] Candidates hidrawNodes();

// A list at the end of the help: terms and their texts, below them what else is to be said.
struct HelpList {
    struct Entry {
        std::string term;
        std::string text;
    };
    std::string heading;
    std::vector<Entry> entries;
    std::string remarks;        // empty, or a line
    std::size_t textColumn = 0; // where the texts begin in the help; 0: on lines of their own
};

// The program or one of its subcommands. CLI11's description is the text alone, its footer is not used.
class App final : public CLI::App {
public:
    // `examples` are command lines. `text` holds lines as in the help, with an empty line between paragraphs.
    App(const std::string& name, std::vector<std::string> examples, const std::string& text);

    // Adds a subcommand.
    App* addCommand(const std::string& name, std::vector<std::string> examples, const std::string& text);

    // Adds a list behind those that are there.
    void addList(HelpList list) { _lists.push_back(std::move(list)); }

    // Says what completes an option's value, and returns the option.
    CLI::Option* offer(CLI::Option* option, Candidates candidates);

    [[nodiscard]] const std::vector<const App*>& commands() const noexcept { return _commands; }
    [[nodiscard]] const std::vector<std::string>& examples() const noexcept { return _examples; }
    [[nodiscard]] const std::vector<HelpList>& lists() const noexcept { return _lists; }
    [[nodiscard]] Candidates candidatesFor(const CLI::Option& option) const;

    // The text up to the first ". ", ": " or "; ", in one line: what the program's help, manual page and completions
    // show of a subcommand.
    [[nodiscard]] std::string summary() const;

private:
    App(const std::string& name, std::vector<std::string> examples, const std::string& text, App& program);

    std::vector<std::string> _examples;
    std::vector<HelpList> _lists;
    std::vector<const App*> _commands; // in the order of the help
    std::unordered_map<const CLI::Option*, Candidates> _candidates;
};

// Reads what stands on the command line and returns it. A std::invalid_argument is wrong usage, reported under `name`,
// which may be empty.
template <class Read>
auto asUsage(const std::string& name, const Read& read) {
    try {
        return read();
    } catch (const std::invalid_argument& error) {
        throw name.empty() ? CLI::ValidationError(error.what()) : CLI::ValidationError(name, error.what());
    }
}

} // namespace VeltoTouch::Velto
