#pragma once

#include "Velto/Daemon/ConfigurationEntry.h"

#include <filesystem>
#include <string>

// The file of a configuration that velto set --keep writes.

namespace VeltoTouch {

[[nodiscard]] std::filesystem::path keptFileIn(const std::filesystem::path& folder);

// The text of the file with these entries.
[[nodiscard]] std::string keptText(const ConfigurationEntries& entries);

} // namespace VeltoTouch
