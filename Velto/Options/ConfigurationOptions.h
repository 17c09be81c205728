#pragma once

#include "Velto/Daemon/ConfigurationEntry.h"
#include "Velto/Options/App.h"
#include "Velto/Options/Settings.h"

#include <string>
#include <vector>

namespace VeltoTouch::Velto {

// Sorts what was given on the command line; keys of gestures as "keys.tap.play-pause=KEY_MUTE". Throws
// std::invalid_argument for what no configuration can hold.
[[nodiscard]] ConfigurationEntries entriesOf(const std::vector<Setting>& given, const std::string& origin);

// The keys at the end of the help, with their defaults.
[[nodiscard]] HelpList keyList();

// --config FOLDER, which must be there.
CLI::Option* addConfiguration(App& app, std::string& target, const std::string& description);

} // namespace VeltoTouch::Velto
