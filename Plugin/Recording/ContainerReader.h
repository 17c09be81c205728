#pragma once

#include "Platform/Value.h"
#include "Plugin/Recording/Frame.h"

#include <cstdint>
#include <list>

namespace VeltoTouch {

struct ContainerContent {
    std::uint64_t version = 0; // that the container says it has
    std::list<Frame> frames;   // in file order
};

// Reads a container of any known version. Throws std::invalid_argument with what is wrong, and
// std::runtime_error("migrateSerializedContainer failed: ...") if it cannot be brought to the current version, text
// that is no JSON included. What is thrown carries the place of the damage if it is known (Damage.h).
//
// Frames take less memory than their text. Only of a container that is not in its usual form, the parser's tree is
// taken too: 8 bytes of address space a byte of text. Throws std::bad_alloc. Any thread.
[[nodiscard]] ContainerContent readContainer(const Data& container);

} // namespace VeltoTouch
