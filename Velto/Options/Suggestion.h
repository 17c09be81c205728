#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>

namespace VeltoTouch::Velto {

// " (did you mean 'info'?)" for a mistyped word, or for a part of a longer one: the candidate that it fits into with
// the fewest edits, each a letter that is added, missing, wrong or exchanged with its neighbour. Empty where no
// candidate is near, or the word is one.
[[nodiscard]] std::string didYouMean(std::string_view word, const std::vector<std::string>& candidates);

// "unknown command 'foo' (did you mean 'info'?)".
[[nodiscard]] std::string unknown(std::string_view what, std::string_view word,
                                  const std::vector<std::string>& candidates);

[[nodiscard]] std::vector<std::string> commandNames(const CLI::App& program);

} // namespace VeltoTouch::Velto
