#pragma once

#include "Velto/Daemon/Bus/Values.h"

#include <cstddef>
#include <string>

namespace VeltoTouch::Bus {

[[noreturn]] inline void refuseAsTooMuch(const std::string& what) {
    throw CallError(SD_BUS_ERROR_LIMITS_EXCEEDED, what);
}

// The bytes that a value may still take in a message. Every number, text and container takes room.
class Room {
public:
    explicit Room(std::size_t bytes) noexcept : _bytes(bytes) {}

    // `characters`: those of a text, the bytes of data, or the signature of a container's contents. Throws CallError if
    // there is not so much left.
    void take(std::size_t characters = 0) {
        if (_bytes < kOverhead || _bytes - kOverhead < characters)
            refuseAsTooMuch("the value is too large");
        _bytes -= kOverhead + characters;
    }
    [[nodiscard]] std::size_t left() const noexcept { return _bytes; }

private:
    // The most that anything takes beside its characters: 8 bytes of a number, or of a length and a terminator, and 7
    // before it up to its boundary.
    static constexpr std::size_t kOverhead = 16;

    std::size_t _bytes;
};

} // namespace VeltoTouch::Bus
