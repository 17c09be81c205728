#pragma once

#include "Platform/Value.h"
#include "Plugin/Recording/Frame.h"

#include <cstdint>
#include <list>

namespace VeltoTouch {

// Reads a container of any known version; frames in file order. Throws std::invalid_argument with what is wrong, and
// std::runtime_error("migrateSerializedContainer failed: ...") if it cannot be brought to the current version, text
// that is no JSON included. What is thrown carries the place of the damage if it is known (Damage.h). Any thread.
[[nodiscard]] std::list<Frame> readContainer(const Data& container);

// The version that a container says it has. Throws std::invalid_argument if it says none. Any thread.
[[nodiscard]] std::uint64_t versionOfContainer(const Data& container);

} // namespace VeltoTouch
