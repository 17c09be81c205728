#pragma once

#include <cstdint>
#include <optional>
#include <string>

// Keys by the kernel's names, such as KEY_PLAYPAUSE.

namespace VeltoTouch {

// Returns the name of a key; "none" for no key.
[[nodiscard]] std::string nameOfKey(std::uint16_t key);

// Returns the key of this name, kNoKey for "none"; nothing if no key of a keyboard is called that.
[[nodiscard]] std::optional<std::uint16_t> keyCalled(const std::string& name);

} // namespace VeltoTouch
