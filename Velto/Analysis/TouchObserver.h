#pragma once

#include "Velto/Analysis/Pulls.h"
#include "Velto/Analysis/Touch.h"
#include "Velto/Analysis/Track.h"

#include <cstddef>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace VeltoTouch::Analysis {

// Makes a record of every touch from what the recognizer shows after each frame. It reads and never writes: results are
// the same with and without it.
//
// The recognizer clears peak, score and latched pixels inside the frame that ends a touch, so they are latched here
// frame by frame; the tap features survive that frame and are read in it.
//
// Not for several threads at once.
class TouchObserver {
public:
    // What costs time in every frame and is not always wanted.
    enum class Contributions : bool { Leave, Follow };

    explicit TouchObserver(Contributions contributions) : _contributions(contributions) {}

    // Takes in a frame, in order. The recognizer is as it stands after it.
    void frame(const Track::Step& step, const Algs& algs, std::span<const Gesture> gestures);

    // Takes out the touches that have ended so far, in their order. For observation without end.
    [[nodiscard]] std::vector<Touch> takeEnded() { return std::exchange(_touches, {}); }
    // Returns the touch in progress as far as it is known, with no outcome and no end; null if there is none.
    [[nodiscard]] const Touch* inProgress() const noexcept { return _isTouching ? &_touch : nullptr; }

    // Ends the observation and returns the touches, less those taken out, in their order. A touch that is still in
    // progress ends at the last frame, unfinished unless it has become a hold.
    [[nodiscard]] std::vector<Touch> finish();

    // Returns how many touches have ended so far: the number of the last of them.
    [[nodiscard]] std::uint64_t endedTouches() const noexcept { return _begun - (_isTouching ? 1U : 0U); }

private:
    // The level that each pixel must exceed to turn on depends on its trough before the frame in which it does.
    struct Troughs {
        Pixels::Lanes<float> pads{};
        VirtualPixels::Lanes<float> groups{};
    };

    void begin(const Track::Step& step, const Algs& algs);
    void follow(const Track::Step& step, const Algs& algs);
    void followPeak(const Algs& algs);
    void followTimeout(const Track::Step& step, const HandStats& hand);
    void addGestures(const Track::Step& step, std::span<const Gesture> gestures);
    void end(const Track::Step& step, const Algs& algs);
    void addForkChecks();
    void addTapChecks(const HandStats& hand, bool onlyIfOneFails);

    const Contributions _contributions;
    std::vector<Touch> _touches;
    std::size_t _begun = 0; // touches
    Track::Step _lastStep;

    // Of the touch in progress.
    bool _isTouching = false;
    Touch _touch;
    float _handPeak = 0;          // the recognizer's peak in the frame before; it begins anew when a hold ends
    float _peak = 0;              // the highest of the touch, normalized
    std::uint32_t _elapsedMs = 0; // at the last touching frame
    std::uint32_t _timeoutMs = 0; // in force then
    std::optional<Check> _touchScore;
    bool _isHoldScore = false;  // _touchScore is that of a holdStart
    bool _isScoreAsked = false; // the last touching frame was timed out, with hold suppression on

    Troughs _troughs; // after the last frame without a touch
    ScoreContributions _score;
};

// Plays a track and returns its touches.
[[nodiscard]] std::vector<Touch>
touchesOf(const Track& track, const std::vector<Setting>& settings,
          TouchObserver::Contributions contributions = TouchObserver::Contributions::Leave);

} // namespace VeltoTouch::Analysis
