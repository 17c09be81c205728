#include "Velto/Options/Suggestion.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <utility>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

constexpr std::size_t kShortestWord = 3; // anything is near to a shorter one

// The fewest edits that make one word the other: row i holds, for each beginning of `other`, the edits for the first i
// letters of `word`.
std::size_t editsBetween(std::string_view word, std::string_view other) {
    std::vector<std::size_t> beforePrevious;
    std::vector<std::size_t> previous;
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    for (std::size_t i = 1; i <= word.size(); ++i) {
        beforePrevious = std::exchange(previous, std::exchange(row, std::vector<std::size_t>(other.size() + 1, i)));
        for (std::size_t j = 1; j <= other.size(); ++j) {
            const bool isSame = word[i - 1] == other[j - 1];
            row[j] = std::min({previous[j] + 1, row[j - 1] + 1, previous[j - 1] + (isSame ? 0U : 1U)});
            if (i > 1 && j > 1 && word[i - 1] == other[j - 2] && word[i - 2] == other[j - 1])
                row[j] = std::min(row[j], beforePrevious[j - 2] + 1);
        }
    }
    return row.back();
}

// The edits between two names, if they are near: at most a third of the letters differ, or the word is the beginning of
// the name.
std::optional<std::size_t> nearness(std::string_view word, std::string_view name) {
    if (word.size() < kShortestWord)
        return std::nullopt;
    const std::size_t edits = editsBetween(word, name);
    const bool isBeginning = name.starts_with(word) && name.find('.') == std::string_view::npos;
    return isBeginning || 3 * edits <= std::max(word.size(), name.size()) ? std::optional(edits) : std::nullopt;
}

// Takes off the domains that both keys have in common: they make nothing near.
void dropCommonDomains(std::string_view& word, std::string_view& key) {
    for (;;) {
        const std::size_t length = word.find('.') + 1;
        if (length == 0 || !key.starts_with(word.substr(0, length)))
            return;
        word.remove_prefix(length);
        key.remove_prefix(length);
    }
}

// The fewest edits between the word and the candidate, which may be given without its domains.
std::optional<std::size_t> distance(std::string_view word, std::string_view candidate) {
    dropCommonDomains(word, candidate);
    std::optional<std::size_t> fewest;
    for (;;) {
        if (const auto edits = nearness(word, candidate); edits && (!fewest || *edits < *fewest))
            fewest = edits;
        const std::size_t length = candidate.find('.') + 1;
        if (length == 0)
            return fewest;
        candidate.remove_prefix(length);
    }
}

} // namespace

std::string didYouMean(std::string_view word, const std::vector<std::string>& candidates) {
    if (std::ranges::find(candidates, word) != candidates.end())
        return "";
    const std::string wanted = CLI::detail::to_lower(std::string(word));
    std::optional<std::size_t> fewest;
    std::string suggestion;
    for (const std::string& candidate : candidates) {
        const auto edits = distance(wanted, CLI::detail::to_lower(candidate));
        if (!edits || (fewest && *fewest <= *edits))
            continue;
        fewest = edits;
        suggestion = fmt::format(" (did you mean '{}'?)", candidate);
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
