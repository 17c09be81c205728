#pragma once

#include <cstdint>
#include <optional>
#include <string>

// Keys by the kernel's names, such as KEY_PLAYPAUSE.

namespace VeltoTouch {

// "none" for no key.
[[nodiscard]] std::string nameOfKey(std::uint16_t key);

// Returns nothing if no key of a keyboard is called that; "none" is no key.
[[nodiscard]] std::optional<std::uint16_t> keyCalled(const std::string& name);

} // namespace VeltoTouch
