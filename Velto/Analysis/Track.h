#pragma once

#include "Plugin/Algs/Algs.h"
#include "Plugin/Recording/Frame.h"
#include "Plugin/Reports/InputReport.h"
#include "Velto/Analysis/Setting.h"
#include "Velto/Host/Gesture.h"

#include <cstdint>
#include <functional>
#include <list>
#include <span>
#include <string_view>
#include <vector>

namespace VeltoTouch::Analysis {

// What recognition sees of a recording, parsed once and kept in memory, so that it can be played many times: images,
// firmware resets and writes of the recognizer's settings. A play gives the same events and states, bit for bit, as a
// replay of the recording (Replay.h) without its pipeline, clock and texts.
//
// Immutable: any number of threads may play one track at the same time.
class Track {
public:
    struct Step {
        enum class Kind : std::uint8_t { Image, Reset, Setting };
        Kind kind = Kind::Image;
        std::uint32_t setting = 0;     // of a write: its place in the track's list
        std::uint64_t ns = 0;          // nanoseconds from the recording's first frame
        InputReport::Image image = {}; // all 0 for a reset, as the recognizer takes it
    };

    // `gestures` are the frame's, at the step's time. The recognizer is as it stands after the frame.
    using FrameHandler = std::function<void(const Step& step, const Algs& algs, std::span<const Gesture> gestures)>;

    // `frames` are a recording's, sorted by time.
    explicit Track(const std::list<Frame>& frames);

    // Plays all steps through a fresh recognizer. `settings` are written before the first step, and the recording's own
    // writes of their keys are left out; keys that are not the recognizer's do nothing. `handleFrame` is called for
    // every image and reset, on the caller's thread; what it throws ends the play.
    void play(const std::vector<Setting>& settings, const FrameHandler& handleFrame) const;

    // Whether the recording itself writes a setting of the recognizer. `key` is the full one.
    [[nodiscard]] bool writes(std::string_view key) const noexcept;

    [[nodiscard]] std::size_t imageCount() const noexcept { return _imageCount; }
    // From the recording's first frame to its last.
    [[nodiscard]] std::uint64_t durationNs() const noexcept { return _durationNs; }

private:
    std::vector<Step> _steps;
    std::vector<Setting> _writes; // their keys are the recognizer's, without domains
    std::size_t _imageCount = 0;
    std::uint64_t _durationNs = 0;
};

} // namespace VeltoTouch::Analysis
