#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>

namespace VeltoTouch::Velto {

// " (did you mean 'info'?)" for a mistyped word: the candidate with the fewest edits to it, each a letter that is
// added, missing, wrong or exchanged with its neighbour. At most a third of the letters differ, unless the word is the
// beginning of the candidate; a key's domains may be left out. Empty if no candidate is near, or the word is one.
[[nodiscard]] std::string didYouMean(std::string_view word, const std::vector<std::string>& candidates);

// "unknown command 'ifno' (did you mean 'info'?)".
[[nodiscard]] std::string unknown(std::string_view what, std::string_view word,
                                  const std::vector<std::string>& candidates);

[[nodiscard]] std::vector<std::string> commandNames(const CLI::App& program);

} // namespace VeltoTouch::Velto
