#pragma once

#include "Plugin/Recording/Frame.h"
#include "Velto/Bench/LiveSurface.h"

#include <functional>
#include <optional>

namespace VeltoTouch::Bench {

// Returns the frame of a write; nothing for a setting outside the pipeline.
[[nodiscard]] std::optional<Frame> settingFrame(HostTime time, const Setting& setting);

// The handlers of a live surface that make a recording's frames of what comes, as the service records it. The others
// are for the caller to set. Settings outside the pipeline are no frames.
[[nodiscard]] LiveSurface::Handlers frameHandlers(const std::function<void(const Frame& frame)>& add);

} // namespace VeltoTouch::Bench
