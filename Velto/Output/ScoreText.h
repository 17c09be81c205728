#pragma once

#include "Velto/Analysis/Score.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Scores for people.

namespace VeltoTouch::Velto {

// A label that went wrong, or a stray.
struct Fault {
    std::uint64_t startNs = 0;
    std::uint64_t endNs = 0;
    std::string_view kind;
    std::string meant; // of a stray: what came
    std::optional<std::size_t> touch;
    std::string cause; // empty: not known
};

// In the order of their starts.
[[nodiscard]] std::vector<Fault> faultsOf(const Analysis::RecordingScore& recording);

// A line for each label of a recording that went wrong and each stray, in the order of their starts; empty if nothing
// did.
[[nodiscard]] std::string faultLines(const Analysis::RecordingScore& recording);

// Kind by region: a row of headings, a row each, and one of all.
[[nodiscard]] std::vector<std::vector<std::string>> countRows(const Analysis::ScoreTotal& total);

// The lines of `totalText` below its table.
[[nodiscard]] std::string totalSentences(const Analysis::ScoreTotal& total);

// A table kind by region if there are labels, and what users feel: false gestures per hour and the delay of the
// decision.
[[nodiscard]] std::string totalText(const Analysis::ScoreTotal& total);

} // namespace VeltoTouch::Velto
