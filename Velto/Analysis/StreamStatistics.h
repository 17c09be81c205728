#pragma once

#include "Plugin/Recording/PipelineRecording.h"
#include "Plugin/Reports/InputReport.h"
#include "Velto/Analysis/PadStatistics.h"
#include "Velto/Analysis/Replay.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace VeltoTouch::Analysis {

// How steadily a recording's reports came, what interrupted them, and what each pad says while nobody touches it.
struct StreamStatistics {
    // Of the times between a report and the next, in nanoseconds. Nearest rank: the median is the shortest interval
    // that at least half of them do not exceed, the 99th percentile the shortest that 99 % do not exceed.
    struct Intervals {
        std::uint64_t median;
        std::uint64_t p99;
        std::uint64_t longest;
    };

    std::uint64_t reports = 0; // of any kind, invalid ones included
    // Reports less one, over the time from the first to the last; none if that takes no time.
    std::optional<double> rateHz;
    std::optional<Intervals> intervals;          // none with fewer than two reports
    std::vector<Disturbance> disturbances;       // in order; the invalid reports are the recording's
    std::array<PadStatistics, kPadCount> pads{}; // with the recognizer set as the recording sets it
};

// Plays a recording that is sorted by time; `frameDone` is called after each of its frames. The result refers to the
// recording's reports.
[[nodiscard]] StreamStatistics statisticsOf(PipelineRecording& recording, const std::function<void()>& frameDone);

} // namespace VeltoTouch::Analysis
