#pragma once

#include "Plugin/Algs/PixelBank.h"
#include "Plugin/Algs/SVM.h"
#include "Plugin/Reports/Regions.h"

#include <array>
#include <cstdint>

namespace VeltoTouch {

// The time from `since` to `now`. Times of the device's frame clock are unsigned 32-bit milliseconds that wrap; so do
// their differences.
[[nodiscard]] constexpr std::uint32_t elapsedMs(std::uint32_t now, std::uint32_t since) noexcept { return now - since; }

// Follows one hand on the surface across frames: whether it touches, for how long, in which region, how much
// its contact looks like a touch (the classifier's running score) and like a tap (the tap model), and from these
// the gesture flags that the recognizer turns into events.
//
// Once per image, after the image's pixels have been updated, the recognizer calls `updateHandState`; at the end
// of every touch it calls `Reset`. The steps of a frame fill a file each, in this order:
//
//   ActiveRegion.cpp   the region of the touch
//   TouchScore.cpp     the running classifier score
//   TapRejection.cpp   the tap model
//   GestureState.cpp   the gesture flags
//
// HandStats.cpp has the driver, the edges and their times. Fields are read by the recognizer, the event statistics and
// the state descriptions; the four settings are written by Algs::setState, all others by the steps alone. No lock: the
// recognizer's callers serialize all calls.
class HandStats {
public:
    // Takes in one frame: edges and their times, active region, touch score, tap model, gesture flags.
    void updateHandState(const Pixels& pixels, const VirtualPixels& virtualPixels, std::uint32_t timeMs) noexcept;

    // Forgets the touch that has ended: score and peak. Regions, times, tap features and flags stay.
    void Reset() noexcept;

    // Sets the shape of the touch score's decay to e squared, which it is from the start.
    void SetDecayParameters() noexcept { decayParameter = kDecayParameter; }

    SVM svm;
    float touchScore = 0;                   // running classifier score, within +-touchScoreLimit
    float decayParameter = kDecayParameter; // shape of the touch score's decay
    float activationThreshold = 200.0F;     // setting; divisor of every normalized value
    std::uint32_t holdTimeoutMs = 500;      // setting; a hold outlasts it
    float holdScoreThreshold = 0;           // touch score that a timed-out touch needs to become a hold
    float touchScoreLimit = 100.0F;         // of the touch score, either way
    float peakSignal = 0;                   // peakValue * activationThreshold, input of the tap model
    bool enableHoldSuppression = true;      // setting
    bool enableTapSuppression = true;       // setting
    bool touching = false;                  // some pixel is on; was...: in the previous frame
    bool wasTouching = false;               //
    bool aboveNoise = false;                // some pixel is above the noise floor
    bool wasAboveNoise = false;             //
    bool holding = false;                   // a hold is in progress
    bool wasHolding = false;                //
    bool suppressingHold = false;           // timed out, but the score is too low for a hold; set like holdTimedOut
    bool wasSuppressingHold = false;        //
    bool tapCandidate = false;              // a touch ended in this frame, and holdTimedOut was not set before it
    bool tapDetected = false;               // and it counts as a tap
    bool tapRejected = false;               // verdict of the tap model
    bool holdTimedOut = false;              // the touch has timed out; updated only while hold suppression is on
    bool wasHoldTimedOut = false;           //
    std::uint32_t touchStartTime = 0;       // when touching last rose
    std::uint32_t touchEndTime = 0;         // when touching last fell
    std::uint32_t aboveNoiseTime = 0;       // when aboveNoise last rose
    std::uint32_t belowNoiseTime = 0;       // when aboveNoise last fell
    std::uint32_t lastEventTime = 0;        // when the last tap or hold ended
    float signalPerDuration = 0;            // tap features: peak signal per ms of the contact, less 0.51
    float signalPerTouchDuration = 0;       // peak signal per ms of touching, less 0.65
    float timeDurationRatio = 0;            // share of the contact that was touching, less 0.25
    std::int32_t nonActivePixels = 0;       // 21 less the pixels that were above noise and never on
    float tapSVMScore = 0;                  // tap model's score
    PixelRegion activeRegion = PixelRegion::None;   // of the current touch; every event carries it
    PixelRegion previousRegion = PixelRegion::None; // before the last region decision of a hold
    PixelRegion eventRegion = PixelRegion::None;    // where the last tap or hold ended
    float peakValue = 0;                            // highest normalized value of an on pixel since the last Reset
    std::int32_t peakPixel = 0;                     // the pad that it came with
    // Per region the highest excess of a pad's value over the noise floor, as of the last region decision.
    std::array<float, kRegionCount> regionMax{};

    // The steps. Pixels are the frame's, updated; times are the frame's.

    // ActiveRegion.cpp

    // Returns the region of a touch that is no hold: that of the peak pad, biased toward the last gesture's region.
    [[nodiscard]] PixelRegion updateActiveRegion(const Pixels& pixels, const VirtualPixels& virtualPixels,
                                                 std::uint32_t timeMs) noexcept;
    // Returns the region of a hold: it stays where it is unless `strongestPad`'s region has gained much on it.
    [[nodiscard]] PixelRegion changeActiveRegion(const Pixels& pixels, std::int32_t strongestPad) noexcept;
    // Computes regionMax.
    void updateRegionMax(const Pixels& pixels) noexcept;
    // Returns the share of the strongest pad's peak that keeps a touch in the last gesture's region: 0.65 up to 0.3 s
    // after the gesture, 1 from 1 s on, linear between.
    [[nodiscard]] float updateTimeBiasFactor(std::uint32_t timeMs) const noexcept;
    // Returns the value at x of the line through (x0, y0) and (x1, y1).
    [[nodiscard]] static float fuzzify(float x, float x0, float x1, float y0, float y1) noexcept {
        const float a = (x - x0) / (x1 - x0);
        return a * y1 + (1.0F - a) * y0;
    }
    // The same, held at y0 up to x0 and at y1 from x1 on.
    [[nodiscard]] static float fuzzifyAndClip(float x, float x0, float x1, float y0, float y1) noexcept {
        if (x <= x0)
            return y0;
        if (x >= x1)
            return y1;
        return fuzzify(x, x0, x1, y0, y1);
    }

    // TouchScore.cpp

    // Scores the frame and adds it to the touch score, within the limit.
    void updateTouchScore(const Pixels& pixels, const VirtualPixels& virtualPixels, std::uint32_t timeMs) noexcept;
    // Fades the score of a touch that came back above noise, by the length of the gap. Double precision, rounded once.
    void decayTouchScore(std::uint32_t timeMs) noexcept;

    // TapRejection.cpp

    // Weights of the tap model's score.
    static constexpr float kNonActivePixelsWeight = 0.1886F;
    static constexpr float kSignalPerDurationWeight = 0.2772F;
    static constexpr float kTimeDurationRatioWeight = 2.7205F;
    // Computes tap features and verdict. They mean something in the frame in which a touch ends.
    void updateTapRejection(const Pixels& pixels, const VirtualPixels& virtualPixels) noexcept;

    // GestureState.cpp

    // Sets the gesture flags from the statistics, the hold time-out and the two suppression switches.
    void updateGestureState(std::uint32_t timeMs) noexcept;

private:
    static constexpr float kDecayParameter = 7.3890562F; // e squared

    void updateEdgeTimes(std::uint32_t timeMs) noexcept;
};

} // namespace VeltoTouch
