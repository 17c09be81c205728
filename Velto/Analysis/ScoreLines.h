#pragma once

#include "Velto/Analysis/Score.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Scores as JSON Lines, and back.

namespace VeltoTouch::Analysis {

// One of the parts that a run over many recordings was split into: every `of`-th file from the `number`-th.
struct Shard {
    std::size_t number = 1;
    std::size_t of = 1;
    std::uint64_t run = 0; // the same for all parts of a run over the same files with the same settings
};

// Appends the lines of a recording: its labels, its strays, itself.
void appendScoreLines(std::string& text, const RecordingScore& recording);
// Appends the line of all. `shard` is what was scored; none if it was everything.
void appendTotalLine(std::string& text, const ScoreTotal& total, const std::optional<Shard>& shard);

// Reads the lines of a shard again, one after the other.
class ScoreReader {
public:
    // Takes in a line. Returns the recording that it completes, if it does. Throws std::invalid_argument for a line
    // that is none of these.
    [[nodiscard]] std::optional<RecordingScore> read(std::string_view line);

    // Says how the lines that were read differ from what the line of all counts; empty if they do not.
    [[nodiscard]] std::string missing() const;

    // Of the line of all; none before it. A run that was not split is its only shard.
    [[nodiscard]] const std::optional<Shard>& shard() const noexcept { return _shard; }

private:
    RecordingScore _recording; // as far as it is read
    ScoreTotal _total;
    std::optional<Shard> _shard;
    std::vector<std::uint64_t> _announced; // the counts of the line of all
};

} // namespace VeltoTouch::Analysis
