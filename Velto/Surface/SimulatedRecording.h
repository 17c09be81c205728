#pragma once

#include "Plugin/Recording/PipelineRecording.h"
#include "Velto/Surface/Simulation.h"

#include <cstdint>
#include <string_view>

namespace VeltoTouch::Surface {

// What the recording of a simulation is bounded to: hours at the usual rate.
constexpr std::uint64_t kLargestRecording = 1'000'000;

// A label, a metadata frame with this key, says what was meant by a contact. Its value:
//
//   {"gesture": "tap", "hold", "slide", "palm" or "brush",
//    "region": "PlayPause", "VolumeUp", "VolumeDown" or "None" (a palm), "endRegion": of a slide alone,
//    "startMs", "endMs": device times of the contact's first scan and of the first scan without it}
inline constexpr std::string_view kLabelKey = "Label";
[[nodiscard]] Ref<Value> labelValue(const Simulation::Label& label);

// Records a simulation to its script's end: a frame a report, and ahead of the first report of every contact its label.
// Throws std::length_error where the script gives more than kLargestRecording reports.
[[nodiscard]] PipelineRecording recordingOf(Simulation& simulation);

} // namespace VeltoTouch::Surface
