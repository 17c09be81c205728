#pragma once

#include "Velto/Daemon/KeyOutput.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

struct libevdev_uinput;

namespace VeltoTouch {

// A virtual keyboard of the kernel (/dev/uinput), which programs see like a real one. The kernel releases its keys when
// this is destroyed or the program ends, however it ends. One thread at a time.
class UinputKeyboard final : public KeyOutput {
public:
    // Creates a keyboard with these keys. Throws std::system_error if the kernel refuses; needs the right to write to
    // /dev/uinput.
    UinputKeyboard(const std::string& name, std::span<const std::uint16_t> keys);

    // The kernel drops a key that the keyboard does not have.
    void setKey(std::uint16_t key, bool isPressed) override;

    // Returns its event node, /dev/input/eventN; empty if the kernel does not say. On the thread that made it.
    [[nodiscard]] std::string node() const;
    // Returns the number of keys pressed so far. Any thread.
    [[nodiscard]] std::uint64_t pressedKeys() const noexcept { return _pressedKeys; }

private:
    struct Destroy {
        void operator()(libevdev_uinput* device) const noexcept;
    };

    std::unique_ptr<libevdev_uinput, Destroy> _device;
    std::atomic<std::uint64_t> _pressedKeys{0};
};

} // namespace VeltoTouch
