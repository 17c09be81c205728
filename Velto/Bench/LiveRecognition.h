#pragma once

#include "Plugin/Pipeline/Pipeline.h"
#include "Plugin/Recording/Frame.h"
#include "Velto/Analysis/Disturbance.h"
#include "Velto/Analysis/Track.h"
#include "Velto/Host/Gesture.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace VeltoTouch::Bench {

using Analysis::Disturbance;

// Plays frames, as they come, through a pipeline of its own: what a service would see of them. One thread.
class LiveRecognition {
public:
    // What a frame came to. Of a frame that is no report all is empty.
    struct Seen {
        std::optional<Analysis::Track::Step> step; // none for a report that recognition does not see
        std::optional<Disturbance::Kind> disturbance;
        std::vector<Gesture> gestures;
    };

    LiveRecognition();
    LiveRecognition(const LiveRecognition&) = delete;
    LiveRecognition& operator=(const LiveRecognition&) = delete;
    ~LiveRecognition() = default;

    // Takes in a frame, in the order of time. Step and gestures have its time. Valid until the next frame.
    const Seen& handle(const Frame& frame);

    // The recognizer, as it stands after the newest frame.
    [[nodiscard]] const Algs& algs() const noexcept { return _pipeline.algs; }

    // Counts until then.
    [[nodiscard]] std::uint32_t gaps() const noexcept { return _pipeline.disjointImageCount; }
    [[nodiscard]] std::uint32_t resets() const noexcept { return _pipeline.resetCount; }
    [[nodiscard]] std::uint64_t invalidReports() const noexcept { return _invalidReports; }

private:
    Pipeline _pipeline;
    std::uint64_t _invalidReports = 0;
    Seen _seen; // of the newest frame
};

} // namespace VeltoTouch::Bench
