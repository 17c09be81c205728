#pragma once

#include "Platform/Mutex.h"
#include "Velto/Daemon/KeyOutput.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

struct libevdev_uinput;

namespace VeltoTouch {

// A virtual keyboard of the kernel (/dev/uinput), which programs see like a real one. The kernel releases its keys when
// this is destroyed or the program ends, however it ends. One thread at a time.
class UinputKeyboard final : public KeyOutput {
public:
    // Creates a keyboard with these keys. Throws std::system_error if the kernel refuses; needs the right to write to
    // /dev/uinput.
    UinputKeyboard(std::string name, std::span<const std::uint16_t> keys);

    // Makes the keyboard anew if it has not all of the keys: it cannot grow.
    void announce(std::span<const std::uint16_t> keys) override;
    // The kernel drops a key that the keyboard does not have.
    void setKey(std::uint16_t key, bool isPressed) override;

    // Returns its event node, /dev/input/eventN; empty if the kernel does not say. Any thread.
    [[nodiscard]] std::string node() const;
    // Returns the number of keys pressed so far. Any thread.
    [[nodiscard]] std::uint64_t pressedKeys() const noexcept { return _pressedKeys; }

private:
    struct Destroy {
        void operator()(libevdev_uinput* device) const noexcept;
    };

    [[nodiscard]] std::unique_ptr<libevdev_uinput, Destroy> make(std::span<const std::uint16_t> keys) const;
    void keepNode();

    const std::string _name;
    std::unique_ptr<libevdev_uinput, Destroy> _device;
    std::vector<std::uint16_t> _keys; // that it has
    mutable Mutex _lock;
    std::string _node VELTO_GUARDED_BY(_lock);
    std::atomic<std::uint64_t> _pressedKeys{0};
};

} // namespace VeltoTouch
