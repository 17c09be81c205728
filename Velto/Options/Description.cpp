#include "Velto/Options/Description.h"

#include <algorithm>

namespace VeltoTouch::Velto {
namespace {

constexpr std::string_view kExamples = "Example:\n";
constexpr std::string_view kIndent = "  ";

// Takes the first line, without its end, from the text.
std::string_view takeLine(std::string_view& text) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    return line;
}

std::string_view withoutBlanks(std::string_view line) {
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    return line;
}

void appendLine(std::string& text, std::string_view line) {
    if (!text.empty())
        text += '\n';
    text += line;
}

HelpList::Entry parseEntry(std::string_view line) {
    const auto gap = line.find(kIndent);
    if (gap == std::string_view::npos)
        return {.term = std::string(line), .text = {}};
    return {.term = std::string(line.substr(0, gap)), .text = std::string(withoutBlanks(line.substr(gap)))};
}

void addIndented(HelpList& list, std::string_view line) {
    const bool goesOn = line.substr(kIndent.size()).starts_with(' ') && !list.entries.empty();
    if (goesOn)
        appendLine(list.entries.back().text, withoutBlanks(line));
    else
        list.entries.push_back(parseEntry(withoutBlanks(line)));
}

} // namespace

std::string Description::summary() const {
    std::string line = text.substr(0, text.find("\n\n"));
    std::ranges::replace(line, '\n', ' ');
    for (const char* const end : {". ", ": ", "; "})
        line.erase(std::min(line.find(end), line.size()));
    if (line.ends_with('.'))
        line.pop_back();
    return line;
}

Description parseDescription(std::string_view description) {
    Description parsed;
    if (description.starts_with(kExamples)) {
        description.remove_prefix(kExamples.size());
        while (description.starts_with(kIndent))
            parsed.examples.emplace_back(takeLine(description).substr(kIndent.size()));
    }
    while (description.starts_with('\n'))
        description.remove_prefix(1);
    parsed.text = description;
    return parsed;
}

std::vector<HelpList> parseFooter(std::string_view footer) {
    std::vector<HelpList> lists;
    while (!footer.empty()) {
        const std::string_view line = takeLine(footer);
        const bool isIndented = line.starts_with(kIndent);
        const bool isHeading = !isIndented && line.ends_with(':');
        if (isHeading || (lists.empty() && !line.empty()))
            lists.emplace_back();
        if (isHeading)
            lists.back().heading = line.substr(0, line.size() - 1);
        else if (isIndented)
            addIndented(lists.back(), line);
        else if (!line.empty())
            appendLine(lists.back().remarks, line);
    }
    return lists;
}

} // namespace VeltoTouch::Velto
