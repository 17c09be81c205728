#pragma once

#include "Platform/Value.h"

#include <string>
#include <string_view>
#include <vector>

namespace VeltoTouch::Tools {

// A setting as given on the command line, KEY=VALUE. KEY is a full property key; VALUE is JSON, or a string where
// it is no JSON.
struct Setting {
    std::string key;
    Ref<Value> value;
};

// Throws std::invalid_argument where there is no "=" behind a key.
[[nodiscard]] Setting parseSetting(std::string_view text);

// Says on standard error which settings will have no effect and which values count as 0.
void warnOfDoubtfulSettings(const std::vector<Setting>& settings);

} // namespace VeltoTouch::Tools
