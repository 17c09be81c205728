#pragma once

#include "Velto/Daemon/Configuration.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

// The file of a configuration that velto set --keep writes.

namespace VeltoTouch {

[[nodiscard]] std::filesystem::path keptFileIn(const std::filesystem::path& folder);

// Returns the file's text with these entries in place of those that it had under their names. Throws
// std::invalid_argument if `text` is no TOML.
[[nodiscard]] std::string withKept(std::string_view text, const std::vector<ConfiguredSetting>& settings,
                                   const std::vector<ConfiguredKey>& keys);

} // namespace VeltoTouch
