#pragma once

#include "Velto/Daemon/Bus/Names.h"
#include "Velto/Options/Devices.h"

#include <chrono>
#include <optional>

namespace VeltoTouch::Velto {

struct LiveStatsOptions {
    DeviceChoice device;
    Bus::Which bus = Bus::Which::System;
    std::optional<std::chrono::microseconds> duration; // none: until the device goes
    bool jsonl = false;
};

// Measures a device's reports as they come: on a terminal one block that is refreshed, with `jsonl` a line a second,
// otherwise one block at the end. Returns the exit status.
[[nodiscard]] int showLiveStats(const LiveStatsOptions& options);

} // namespace VeltoTouch::Velto
