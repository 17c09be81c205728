#pragma once

#include "Velto/Daemon/Configuration.h"
#include "Velto/Options/Settings.h"

#include <string>
#include <string_view>
#include <vector>

namespace VeltoTouch::Velto {

// Keys of gestures are given as "keys.tap.play-pause=KEY_MUTE".
inline constexpr std::string_view kKeysDomain = "keys";

// What a configuration can hold.
struct Lasting {
    std::vector<ConfiguredSetting> settings;
    std::vector<ConfiguredKey> keys;
};

// Sorts what was given on the command line. Throws std::invalid_argument for what no configuration can hold.
[[nodiscard]] Lasting lastingOf(const std::vector<Setting>& given, const std::string& origin);

} // namespace VeltoTouch::Velto
