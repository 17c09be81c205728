#pragma once

#include "Velto/Daemon/KeyOutput.h"

#include <memory>
#include <span>
#include <string>

struct libevdev_uinput;

namespace VeltoTouch {

// A keyboard that the kernel shows to everyone as it does a real one (/dev/uinput). When it goes, or its program ends
// in whatever way, the kernel releases its keys. On one thread at a time.
class UinputKeyboard final : public KeyOutput {
public:
    // A keyboard with so many keys. Throws std::system_error where the kernel makes none; the right to write to
    // /dev/uinput is needed.
    UinputKeyboard(const std::string& name, std::span<const std::uint16_t> keys);

    // A key that the keyboard does not have is dropped by the kernel.
    void setKey(std::uint16_t key, bool isPressed) override;

private:
    struct Destroy {
        void operator()(libevdev_uinput* device) const noexcept;
    };

    std::unique_ptr<libevdev_uinput, Destroy> _device;
};

} // namespace VeltoTouch
