#pragma once

#include "Platform/Value.h"

#include <string>

namespace VeltoTouch {

// Returns a value as people write it: compact JSON, a float with no more digits than it needs.
[[nodiscard]] std::string shortText(const Value* value);

} // namespace VeltoTouch
