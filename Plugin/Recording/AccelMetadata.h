#pragma once

#include "Platform/Value.h"

#include <utility>
#include <vector>

// A sample of the accelerometer as a recording holds it: metadata under "Accel" with the value {"X", "Y", "Z"}, in g.

namespace VeltoTouch::AccelMetadata {

inline constexpr const char* kKey = "Accel";

[[nodiscard]] inline Ref<Value> valueOf(float x, float y, float z) {
    std::vector<Dictionary::Entry> axes;
    axes.push_back({.key = "X", .value = Number::withFloat(x)});
    axes.push_back({.key = "Y", .value = Number::withFloat(y)});
    axes.push_back({.key = "Z", .value = Number::withFloat(z)});
    return makeRef<Dictionary>(std::move(axes));
}

} // namespace VeltoTouch::AccelMetadata
