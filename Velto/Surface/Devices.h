#pragma once

#include "Plugin/Recording/PipelineRecording.h"
#include "Velto/Surface/PlayedDevice.h"
#include "Velto/Surface/Simulation.h"

#include <cstdint>

namespace VeltoTouch::Surface {

// A device that sends a simulation's reports and is removed at the script's end. It answers the controller's feature
// reports.
[[nodiscard]] Ref<PlayedDevice> simulatedDevice(Simulation simulation, double speed);

// A device that sends a recording's input reports in the order of time and is removed after the last. Settings and
// metadata are left out. It has no feature reports.
[[nodiscard]] Ref<PlayedDevice> recordingPlayer(const PipelineRecording& recording, double speed);

// Returns how many settings a recording holds, which its player leaves out.
[[nodiscard]] std::uint64_t settingsIn(const PipelineRecording& recording);

} // namespace VeltoTouch::Surface
