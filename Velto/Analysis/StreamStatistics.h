#pragma once

#include "Plugin/Recording/PipelineRecording.h"
#include "Plugin/Reports/InputReport.h"
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

    // In counts, as the device reports a pad's signal, over the images after which the recognizer, set as the recording
    // sets it, has no pad and no group of pads on. The baseline is the median, the noise the distance from it that 68 %
    // of the signals do not exceed (nearest rank, both): of a normal distribution its standard deviation, but the few
    // images in which a finger comes or goes do not weigh.
    struct Rest {
        std::int32_t baseline;
        std::int32_t noise;
    };

    struct Pad {
        std::optional<Rest> rest;         // none without such an image
        std::optional<std::int16_t> peak; // of all images, in counts
    };

    std::uint64_t reports = 0; // of any kind, invalid ones included
    // Reports less one, over the time from the first to the last; none if that takes no time.
    std::optional<double> rateHz;
    std::optional<Intervals> intervals;            // none with fewer than two reports
    std::vector<Replay::Disturbance> disturbances; // in order; the invalid reports are the recording's
    std::array<Pad, kPadCount> pads{};
};

// Plays a recording that is sorted by time; `frameDone` is called after each of its frames. The result refers to the
// recording's reports.
[[nodiscard]] StreamStatistics statisticsOf(PipelineRecording& recording, const std::function<void()>& frameDone);

} // namespace VeltoTouch::Analysis
