#pragma once

#include "Velto/Daemon/Bus/Names.h"
#include "Velto/Daemon/ConfigurationEntry.h"

#include <filesystem>

namespace VeltoTouch::Velto {

// Keeps entries in the file of a configuration that velto set --keep writes, and lets the served surfaces that read the
// configuration read it anew. Several may keep at the same moment. `given`: the configuration's folder; empty for the
// one that the served surfaces read, or the machine's if none is served. Returns the exit status. Throws
// std::runtime_error if nothing was kept.
[[nodiscard]] int keep(const ConfigurationEntries& entries, const std::filesystem::path& given, Bus::Which bus);

} // namespace VeltoTouch::Velto
