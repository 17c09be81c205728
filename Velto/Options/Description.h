#pragma once

#include <string>
#include <string_view>
#include <vector>

// The texts of the help, taken apart: what lists, manual pages and completions are made of.

namespace VeltoTouch::Velto {

// A program's or subcommand's description: "Example:", lines that are indented, an empty line, the text.
struct Description {
    std::vector<std::string> examples;         // command lines
    std::string text;                          // lines as in the help; an empty line between paragraphs
    [[nodiscard]] std::string summary() const; // one line: the text's first statement, without its full stop
};

[[nodiscard]] Description parseDescription(std::string_view description);

// A list at the end of the help: a heading with a colon, indented lines of a term and, two blanks apart, its text, then
// what else is to be said.
struct HelpList {
    struct Entry {
        std::string term;
        std::string text;
    };
    std::string heading; // without its colon
    std::vector<Entry> entries;
    std::string remarks;
};

// Lines before the first heading are remarks of a list without heading.
[[nodiscard]] std::vector<HelpList> parseFooter(std::string_view footer);

} // namespace VeltoTouch::Velto
