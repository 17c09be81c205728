#pragma once

#include "Algs/Algs.h"

#include <string>

namespace VeltoTouch {

// What the service makes of a value under a full property key, such as "Pipeline.Algs.HoldTimeoutMilliseconds".
[[nodiscard]] Algs::SettingKind settingKindOf(std::string key);

} // namespace VeltoTouch
