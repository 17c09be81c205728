#pragma once

#include "Platform/Value.h"

#include <string>

namespace VeltoTouch::Analysis {

// A setting to write. The key is a full property key; keys outside the pipeline's domain do not act on a recording.
struct Setting {
    std::string key;
    Ref<Value> value;
};

} // namespace VeltoTouch::Analysis
