#include "Velto/Daemon/KeyNames.h"

#include "Velto/Daemon/KeyTable.h"

#include <libevdev/libevdev.h>

namespace VeltoTouch {
namespace {

constexpr const char* kNone = "none";

} // namespace

std::string nameOfKey(std::uint16_t key) {
    const char* name = key == kNoKey ? kNone : libevdev_event_code_get_name(EV_KEY, key);
    return name != nullptr ? name : std::to_string(key);
}

std::optional<std::uint16_t> keyCalled(const std::string& name) {
    if (name == kNone)
        return kNoKey;
    if (!name.starts_with("KEY_")) // what a keyboard has; a button would make it a mouse
        return std::nullopt;
    const int code = libevdev_event_code_from_name(EV_KEY, name.c_str());
    return code > KEY_RESERVED && code < KEY_MAX ? std::optional(static_cast<std::uint16_t>(code)) : std::nullopt;
}

} // namespace VeltoTouch
