#pragma once

#include "Algs/Algs.h"

#include <string>
#include <string_view>

namespace VeltoTouch {

// The domain of the pipeline's keys among the service's; recordings leave it out with its dot.
constexpr std::string_view kPipelineDomain = "Pipeline";

// What the service makes of a value under a full property key, such as "Pipeline.Algs.HoldTimeoutMilliseconds".
[[nodiscard]] Algs::SettingKind settingKindOf(std::string key);

} // namespace VeltoTouch
