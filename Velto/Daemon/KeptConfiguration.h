#pragma once

#include "Velto/Daemon/Configuration.h"

#include <filesystem>
#include <string>
#include <vector>

// The file of a configuration that velto set --keep writes.

namespace VeltoTouch {

// Returns the path of that file.
[[nodiscard]] std::filesystem::path keptFileIn(const std::filesystem::path& folder);

// Reads the file. Adds to `lost` the lines that writing it anew would lose: wrong ones or, if there are none, comments.
// Throws std::runtime_error if it cannot be read or is no TOML.
[[nodiscard]] Configuration::File readKept(const std::filesystem::path& file, std::vector<Complaint>& lost);

// Returns the text of the file with these entries.
[[nodiscard]] std::string keptText(const ConfigurationEntries& entries);

} // namespace VeltoTouch
