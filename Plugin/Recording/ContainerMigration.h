#pragma once

#include "Platform/Value.h"

namespace VeltoTouch {

// Brings a parsed container (nil for text that is no JSON) to the current version. Checks only what it renames; a
// container of the current version is returned itself. Throws std::invalid_argument with what is wrong, for a frame
// with its place (Damage.h). Any thread.
[[nodiscard]] Ref<Value> migrateContainer(const Ref<Value>& container);

} // namespace VeltoTouch
