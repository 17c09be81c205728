#pragma once

#include <cstdint>
#include <span>

namespace VeltoTouch {

// Receives key presses. Keys have the kernel's numbers (KEY_... of linux/input-event-codes.h).
class KeyOutput {
public:
    KeyOutput() = default;
    KeyOutput(const KeyOutput&) = delete;
    KeyOutput& operator=(const KeyOutput&) = delete;
    virtual ~KeyOutput() = default;

    // Throws std::system_error if the key cannot be passed on.
    virtual void setKey(std::uint16_t key, bool isPressed) = 0;

    // Called while no key is pressed, before keys are pressed that may be new. Throws as `setKey` does.
    virtual void announce(std::span<const std::uint16_t> keys) = 0;
};

} // namespace VeltoTouch
