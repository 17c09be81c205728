#pragma once

#include "Platform/Value.h"
#include "Plugin/Algs/Settings.h"
#include "Plugin/Shared/Keys.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace VeltoTouch::Analysis {

// A setting to write. The key is a full property key; keys outside the pipeline's domain do not act on a recording.
struct Setting {
    std::string key;
    Ref<Value> value;
};

// The settings that change recognition.
inline constexpr std::string_view kHoldTimeout = "Pipeline.Algs.HoldTimeoutMilliseconds";
inline constexpr std::string_view kActivationThreshold = "Pipeline.Algs.ActivationThreshold";
inline constexpr std::string_view kHoldSuppression = "Pipeline.Algs.EnableHoldSuppression";
inline constexpr std::string_view kTapSuppression = "Pipeline.Algs.EnableTapSuppression";
static_assert(std::ranges::all_of(std::array{kHoldTimeout, kActivationThreshold, kHoldSuppression, kTapSuppression},
                                  [](std::string_view key) {
                                      return std::ranges::find(kSettingRows, *Keys::belowAlgs(key), &SettingRow::key) !=
                                             kSettingRows.end();
                                  }));

} // namespace VeltoTouch::Analysis
