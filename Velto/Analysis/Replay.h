#pragma once

#include "Plugin/Pipeline/Pipeline.h"
#include "Plugin/Recording/PipelineRecording.h"
#include "Velto/Analysis/Disturbance.h"
#include "Velto/Analysis/Setting.h"
#include "Velto/Host/Gesture.h"

#include <functional>
#include <limits>
#include <optional>
#include <vector>

namespace VeltoTouch::Analysis {

// One play of a recording through a fresh pipeline.
class Replay {
public:
    static constexpr float kMaxSpeed = std::numeric_limits<float>::infinity();

    struct Counts {
        std::uint64_t frames = 0; // of the recording, settings left out included
        std::uint64_t images = 0;
        std::uint64_t invalidReports = 0;
        std::uint64_t events = 0;
        std::uint64_t settingsLeftOut = 0;
        HostTime duration{}; // from the first frame to the last
    };

    // The handlers run within the pipeline and must not throw; work that may throw belongs into `frameDone`.

    // Called for each gesture, in order; its time is since the start of playback.
    std::function<void(const Gesture& gesture)> gestureHandler;
    // Called for each image that the recognizer has processed (a firmware reset is one without contacts, frame 0 and
    // time 0), before its events.
    std::function<void(const Algs& algs, const InputReport::Image& image)> frameHandler;
    // Called for each invalid report, gap in the frame numbers and firmware reset, in order.
    std::function<void(const Disturbance& disturbance)> disturbanceHandler = [](const Disturbance&) {};
    // Called after each frame of the recording; may throw, which ends the play.
    std::function<void()> frameDone = [] {};

    // Plays a recording in time order. `settings` are written before its first frame, and its own writes of their
    // keys are left out.
    void play(PipelineRecording& recording, const std::vector<Setting>& settings, float speed);

    [[nodiscard]] const Counts& counts() const noexcept { return _counts; }
    [[nodiscard]] Pipeline& pipeline() noexcept { return *_pipeline; }

private:
    void installHandlers(HostTime start);
    void installDisturbanceHandlers(HostTime start);
    void showFrame();

    std::shared_ptr<Pipeline> _pipeline = std::make_shared<Pipeline>();
    Counts _counts;
    std::optional<InputReport::Image> _image; // of the report in progress, until it is shown
    std::vector<Gesture> _gestures;           // of the report in progress
};

} // namespace VeltoTouch::Analysis
