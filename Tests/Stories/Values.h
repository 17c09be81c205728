#pragma once

#include "Platform/Value.h"
#include "Tests/Reference/Value.h"

namespace VeltoTouch::Tests {

// A value of the reference as one of the system's; nil for nil.
[[nodiscard]] Ref<Value> valueOf(const Reference::Value& value);

// Whether both say the same: kind, content, and for numbers whether they are booleans. NaN equals NaN.
[[nodiscard]] bool areSame(const Value* ours, const Reference::Value& theirs);

} // namespace VeltoTouch::Tests
