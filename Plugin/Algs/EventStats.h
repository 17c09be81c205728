#pragma once

#include "Platform/Value.h"
#include "Plugin/Algs/HandStats.h"

#include <cstdint>

namespace VeltoTouch {

// Counts, frame by frame, the gestures that were dispatched and those that were suppressed or rejected. Region
// VolumeUp stands for volume up (tap) and increment (hold), VolumeDown for volume down and decrement, PlayPause for
// play-pause (tap) and the Orvi call (hold). Hold counters count frames, not holds.
struct EventStats {
    std::uint64_t numTaps = 0;
    std::uint64_t numBeginHold = 0;
    std::uint64_t numIncrementHold = 0; // every holding frame after the first
    std::uint64_t numEndHold = 0;
    std::uint64_t numVolumeUp = 0;
    std::uint64_t numVolumeDown = 0;
    std::uint64_t numPlayPause = 0;
    std::uint64_t numOrviCall = 0;
    std::uint64_t numOrviCallIncrement = 0;
    std::uint64_t numVolumeIncrement = 0; // hold began or went on
    std::uint64_t numVolumeDecrement = 0;
    std::uint64_t numRejectedTap = 0;
    std::uint64_t numRejectedBeginHold = 0;     // suppressed in the frame in which the time-out was reached
    std::uint64_t numRejectedIncrementHold = 0; // stayed suppressed
    std::uint64_t numRejectedEndHold = 0;
    std::uint64_t numRejectedVolumeUp = 0;
    std::uint64_t numRejectedVolumeDown = 0;
    std::uint64_t numRejectedPlayPause = 0;
    std::uint64_t numRejectedOrviCall = 0;
    std::uint64_t numRejectedOrviCallIncrement = 0;
    std::uint64_t numRejectedVolumeIncrement = 0;
    std::uint64_t numRejectedVolumeDecrement = 0;
    std::uint64_t numSuppressed2Holding = 0; // a suppressed touch became a hold
    std::uint64_t numHolding2Suppressed = 0; // a suppression in a frame that followed a holding frame

    // Counts one frame by the gesture flags that it left.
    void update(const HandStats& hand) noexcept;

    void Reset() noexcept { *this = {}; }

    // Returns a snapshot: {"Dispatched": {...}, "Rejected": {...}} with each counter as an unsigned 64-bit number
    // under its name.
    [[nodiscard]] Ref<Dictionary> statsDictionary() const;

private:
    void countSuppressedHold(const HandStats& hand) noexcept;
    void countHold(const HandStats& hand) noexcept;
    void countRejectedTap(PixelRegion region) noexcept;
    void countTap(PixelRegion region) noexcept;
};

} // namespace VeltoTouch
