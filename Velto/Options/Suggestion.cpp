#include "Velto/Options/Suggestion.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

constexpr std::size_t kShortestWord = 3; // anything fits a shorter one
constexpr std::size_t kMostEdits = 3;

// The fewest edits that make `word` a part of `text`: row i holds, for each end of the part in `text`, the edits for
// the first i letters of the word. A part may begin anywhere (row 0 is 0) and end anywhere (the least of the last row).
std::size_t editsToPartOf(const std::string& text, const std::string& word) {
    std::vector<std::size_t> beforePrevious;
    std::vector<std::size_t> previous;
    std::vector<std::size_t> row(text.size() + 1, 0);
    for (std::size_t i = 1; i <= word.size(); ++i) {
        beforePrevious = std::exchange(previous, std::exchange(row, std::vector<std::size_t>(text.size() + 1, i)));
        for (std::size_t j = 1; j <= text.size(); ++j) {
            const bool isSame = word[i - 1] == text[j - 1];
            row[j] = std::min({previous[j] + 1, row[j - 1] + 1, previous[j - 1] + (isSame ? 0U : 1U)});
            if (i > 1 && j > 1 && word[i - 1] == text[j - 2] && word[i - 2] == text[j - 1])
                row[j] = std::min(row[j], beforePrevious[j - 2] + 1);
        }
    }
    return *std::ranges::min_element(row);
}

} // namespace

std::string didYouMean(std::string_view word, const std::vector<std::string>& candidates) {
    if (word.size() < kShortestWord || std::ranges::find(candidates, word) != candidates.end())
        return "";
    const std::string wanted = CLI::detail::to_lower(std::string(word));
    using Nearness = std::pair<std::size_t, std::size_t>; // fewest edits, then shortest
    Nearness nearest(std::min(kMostEdits, word.size() / 3) + 1, 0);
    std::string suggestion;
    for (const std::string& candidate : candidates) {
        const Nearness nearness(editsToPartOf(CLI::detail::to_lower(candidate), wanted), candidate.size());
        if (nearness < nearest) {
            nearest = nearness;
            suggestion = fmt::format(" (did you mean '{}'?)", candidate);
        }
    }
    return suggestion;
}

std::string unknown(std::string_view what, std::string_view word, const std::vector<std::string>& candidates) {
    return fmt::format("unknown {} '{}'{}", what, word, didYouMean(word, candidates));
}

std::vector<std::string> commandNames(const CLI::App& program) {
    std::vector<std::string> names;
    for (const CLI::App* command : program.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(command->get_name());
    return names;
}

} // namespace VeltoTouch::Velto
