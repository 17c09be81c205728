#pragma once

#include "Plugin/Algs/SVM.h"
#include "Plugin/Reports/InputReport.h"
#include "Python/Recording.h"
#include "Velto/Analysis/Setting.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace VeltoTouch::Python {

// The recognizer after an image.
struct StateRow {
    std::uint64_t ns;
    std::uint32_t frame;
    std::uint32_t timeMs;
    float touchScore;
    float classifier;
    float signalPerTouchDuration;
    float signalPerDuration;
    std::int32_t nonActivePixels;
    float timeDurationRatio;
    float tapScore;
    bool aboveNoise;
    bool touching;
    bool holding;
    bool suppressingHold;
    bool holdTimedOut;
    bool tapCandidate;
    bool tapRejected;
    bool tapDetected;
    std::uint8_t activeRegion;
    std::uint8_t previousRegion;
    std::uint8_t eventRegion;
    std::array<float, kPadCount> pads;
    std::array<float, kGroupCount> groups;
};

// What the tap model saw of a touch, in the frame that ended it.
struct TapRow {
    std::uint64_t touch; // its number
    std::uint64_t endNs;
    float signalPerTouchDuration;
    float signalPerDuration;
    std::int32_t nonActivePixels;
    float timeDurationRatio;
    float tapScore;
    bool tapRejected;
};

struct Played {
    std::string events;  // lines of velto replay --jsonl
    std::string touches; // lines of velto explain --jsonl
    std::vector<StateRow> states;
    std::vector<SVM::RankedValues> ranked; // beside the states
    std::vector<TapRow> taps;
};

// Plays a recording through a fresh recognizer. States and ranked values are made if they are wanted. Any thread,
// without the interpreter lock.
[[nodiscard]] Played play(const Recording& recording, const std::vector<Analysis::Setting>& settings, bool wantsStates);

} // namespace VeltoTouch::Python
