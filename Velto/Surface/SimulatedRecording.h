#pragma once

#include "Plugin/Recording/PipelineRecording.h"
#include "Velto/Surface/Simulation.h"

#include <cstdint>

namespace VeltoTouch::Surface {

// What the recording of a simulation is bounded to: hours at the usual rate.
constexpr std::uint64_t kLargestRecording = 1'000'000;

// Records a simulation to its script's end: a frame a report, and before the first report of every contact a metadata
// frame with the key "Label" and what was meant:
//
//   {"gesture": "tap", "hold", "slide", "palm" or "brush",
//    "region": "PlayPause", "VolumeUp", "VolumeDown" or "None" (a palm), "endRegion": of a slide alone,
//    "startMs", "endMs": device times of the contact's first scan and of the first scan without it}
//
// Throws std::length_error where the script gives more than kLargestRecording reports.
[[nodiscard]] PipelineRecording recordingOf(Simulation& simulation);

} // namespace VeltoTouch::Surface
