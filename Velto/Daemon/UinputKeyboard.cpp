#include "Velto/Daemon/UinputKeyboard.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include <libevdev/libevdev-uinput.h>
#include <libevdev/libevdev.h>

namespace VeltoTouch {
namespace {

// libevdev gives 0 or a negative error number.
void check(int result) {
    if (result < 0)
        throw std::system_error(-result, std::generic_category(), "/dev/uinput");
}

} // namespace

UinputKeyboard::UinputKeyboard(std::string name, std::span<const std::uint16_t> keys)
    : _name(std::move(name)), _device(make(keys)), _keys(keys.begin(), keys.end()) {}

std::unique_ptr<libevdev_uinput, UinputKeyboard::Destroy>
UinputKeyboard::make(std::span<const std::uint16_t> keys) const {
    const std::unique_ptr<libevdev, void (*)(libevdev*)> description(libevdev_new(), libevdev_free);
    if (!description)
        check(-ENOMEM);
    libevdev_set_name(description.get(), _name.c_str());
    for (const std::uint16_t key : keys)
        check(libevdev_enable_event_code(description.get(), EV_KEY, key, nullptr));
    libevdev_uinput* device = nullptr;
    check(libevdev_uinput_create_from_device(description.get(), LIBEVDEV_UINPUT_OPEN_MANAGED, &device));
    return std::unique_ptr<libevdev_uinput, Destroy>(device);
}

void UinputKeyboard::announce(std::span<const std::uint16_t> keys) {
    const auto has = [this](std::uint16_t key) { return std::ranges::count(_keys, key) > 0; };
    if (std::ranges::all_of(keys, has))
        return;
    _device = make(keys);
    _keys.assign(keys.begin(), keys.end());
}

void UinputKeyboard::Destroy::operator()(libevdev_uinput* device) const noexcept { libevdev_uinput_destroy(device); }

void UinputKeyboard::setKey(std::uint16_t key, bool isPressed) {
    check(libevdev_uinput_write_event(_device.get(), EV_KEY, key, isPressed ? 1 : 0));
    check(libevdev_uinput_write_event(_device.get(), EV_SYN, SYN_REPORT, 0));
}

} // namespace VeltoTouch
