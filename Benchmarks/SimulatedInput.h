#pragma once

#include "Plugin/Recording/PipelineRecording.h"

#include <cstddef>

namespace VeltoTouch::Benchmarks {

// So many reports of a made-up user: taps and holds, some slides, palms and brushes, pauses between.
[[nodiscard]] PipelineRecording simulatedRecording(std::size_t reports);

} // namespace VeltoTouch::Benchmarks
