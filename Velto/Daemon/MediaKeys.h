#pragma once

#include "Velto/Daemon/KeyOutput.h"
#include "Velto/Host/Gesture.h"

#include <array>
#include <cstdint>

#include <linux/input-event-codes.h>

namespace VeltoTouch {

// Turns the gestures of a surface into presses of keys.
//
//   region        tap               hold
//   ----------    --------------    --------------
//   play-pause    KEY_PLAYPAUSE     KEY_ASSISTANT
//   volume up     KEY_VOLUMEUP      KEY_VOLUMEUP
//   volume down   KEY_VOLUMEDOWN    KEY_VOLUMEDOWN
//   none          -                 -
//
//   gesture                                what it does, after one key at most was pressed
//   -----------------------------------    -------------------------------------------------------------------
//   tap                                    releases it; presses and releases the region's key for a tap
//   hold start                             releases it and presses the region's key for a hold
//   hold change between volume regions     releases it and presses the region's key; nothing where they are the same
//   hold change to another region          releases a volume key
//   may begin, hold end, cancel,           releases it
//   firmware reset
//
// The region where a hold starts decides what it is for. A hold that started on play-pause keeps the assistant's key
// wherever it moves, and a volume slide that crosses play-pause does not call the assistant.
//
// One thread at a time. Throws what the output throws; the key then counts as released.
class MediaKeys {
public:
    // All keys that are ever pressed.
    static constexpr std::array<std::uint16_t, 4> kKeys{KEY_PLAYPAUSE, KEY_VOLUMEDOWN, KEY_VOLUMEUP, KEY_ASSISTANT};

    // `output` outlives this. The destructor releases no key.
    explicit MediaKeys(KeyOutput& output) noexcept : _output(output) {}

    void handle(const Gesture& gesture);
    void releaseAll() { hold(kNoKey); }

private:
    static constexpr std::uint16_t kNoKey = KEY_RESERVED;

    void click(std::uint16_t key);
    void hold(std::uint16_t key);
    void moveHold(std::uint16_t key);

    KeyOutput& _output;
    std::uint16_t _pressed = kNoKey;
};

} // namespace VeltoTouch
