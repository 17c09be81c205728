#pragma once

#include "Velto/Host/TouchGrouping.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace VeltoTouch {

// Makes one line of text of each touch as it ends: what it came to, on which region, how long it lasted, and the keys
// that were pressed.
//
//   tap PlayPause, 0.08 s: KEY_PLAYPAUSE
//   hold VolumeUp > VolumeDown, 1.52 s: KEY_VOLUMEUP, KEY_VOLUMEDOWN
//   rejected VolumeUp, 0.05 s: none
//   firmware reset: none
class GestureLog {
public:
    // `key` is the one that the gesture pressed, or kNoKey. Returns the line of the touch that it ends.
    [[nodiscard]] std::optional<std::string> add(const Gesture& gesture, std::uint16_t key);

private:
    TouchGrouping _touches;
    std::vector<std::uint16_t> _keys; // of the touch in progress
};

} // namespace VeltoTouch
