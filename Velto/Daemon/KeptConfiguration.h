#pragma once

#include "Velto/Daemon/Configuration.h"

#include <filesystem>
#include <string>
#include <vector>

// The file of a configuration that velto set --keep writes.

namespace VeltoTouch {

[[nodiscard]] std::filesystem::path keptFileIn(const std::filesystem::path& folder);

// Reads the file. `lost` has the lines that its text with other entries would not have: wrong ones, or else comments.
// Throws std::runtime_error if it cannot be read or is no TOML.
[[nodiscard]] Configuration::File readKept(const std::filesystem::path& file, std::vector<Complaint>& lost);

// The text of the file with these entries.
[[nodiscard]] std::string keptText(const ConfigurationEntries& entries);

} // namespace VeltoTouch
