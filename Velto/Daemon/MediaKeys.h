#pragma once

#include "Velto/Daemon/KeyOutput.h"
#include "Velto/Daemon/KeyTable.h"
#include "Velto/Host/Gesture.h"

#include <cstdint>

namespace VeltoTouch {

// Turns the gestures of a surface into presses of keys, by default (kDefaultKeys) of these:
//
//   region        tap               hold
//   ----------    --------------    --------------
//   play-pause    KEY_PLAYPAUSE     KEY_ASSISTANT
//   volume up     KEY_VOLUMEUP      KEY_VOLUMEUP
//   volume down   KEY_VOLUMEDOWN    KEY_VOLUMEDOWN
//   none          -                 -
//
//   gesture                                what it does; "it" is the key that is pressed, if one is
//   -----------------------------------    -------------------------------------------------------------------
//   tap                                    releases it; presses and releases the region's key for a tap
//   hold start                             releases it and presses the region's key for a hold
//   hold change to a volume region         releases it and presses the region's key; nothing where they are the same
//   hold change to another region          releases it
//   may begin, hold end, cancel,           releases it
//   firmware reset
//
// The region where a hold starts decides what it is for. A hold that started on play-pause keeps its key wherever it
// moves, and a volume slide that crosses play-pause does not press that key.
//
// One thread at a time. Throws what the output throws; the key then counts as released.
class MediaKeys {
public:
    // `output` outlives this and has the table's keys. The destructor releases no key.
    explicit MediaKeys(KeyOutput& output, const KeyTable& table = kDefaultKeys) noexcept
        : _output(output), _table(table) {}

    // Returns the key that the gesture pressed, or kNoKey.
    std::uint16_t handle(const Gesture& gesture);
    // Releases the key that is pressed, if one is.
    void releaseAll();

    // Uses the table from the next press on. A key that is pressed stays pressed, and is released later as the key that
    // it is. New keys are announced when none is pressed.
    void setTable(const KeyTable& table);

private:
    std::uint16_t click(std::uint16_t key);
    std::uint16_t startHold(PixelRegion region);
    std::uint16_t moveHold(PixelRegion region);
    std::uint16_t hold(std::uint16_t key);
    void announce();

    KeyOutput& _output;
    KeyTable _table;
    bool _isAnnounced = true; // the table
    bool _staysPut = false;   // the hold keeps its key wherever it moves
    std::uint16_t _pressed = kNoKey;
};

} // namespace VeltoTouch
