#pragma once

#include "Velto/Analysis/ScoreLines.h"
#include "Velto/Analysis/Setting.h"

#include <cstdint>
#include <string>
#include <vector>

// A score that was split over many machines, and its parts put together again.

namespace VeltoTouch::Velto {

// Reads "K/N". Throws CLI::ValidationError.
[[nodiscard]] Analysis::Shard parseShard(const std::string& text);

// Returns what all shards of a run have in common: a hash over what the run is about.
[[nodiscard]] std::uint64_t runOf(const std::vector<std::string>& files,
                                  const std::vector<Analysis::Setting>& settings);

// Reads the results of all shards of one run, and their recordings in the order in which one run takes them. What is
// wrong is reported. Returns the exit status.
[[nodiscard]] int readShards(const std::vector<std::string>& files, std::vector<Analysis::RecordingScore>& recordings);

} // namespace VeltoTouch::Velto
