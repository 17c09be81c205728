#pragma once

#include "Plugin/Recording/Frame.h"
#include "Velto/Bench/TroubleWatch.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace VeltoTouch::Bench {

// The newest write of each setting. Keys that act and set nothing are left out.
class SettingsInForce {
public:
    void add(const Frame& frame);
    // Calls `handle` with each as a frame of this time.
    void writeAt(std::uint64_t timestampNs, const std::function<void(const Frame& frame)>& handle) const;

private:
    std::map<std::string, Frame> _frames;
};

// Picks out of a stream of frames those around some moments: from `beforeNs` before each to `afterNs` behind it. Where
// the stretches of two moments touch or overlap, they are one, without a gap.
//
//   frames    ......................................................
//   touches       [----]   [------------]                   [--]
//   moments                             x                      x
//   kept        ( .......................... )          ( ......... )
//
// A touch is kept whole. With the moment at the end of a touch the time before counts from its beginning, and the
// stretch begins so far back that the recognizer, which starts anew with it, decides the touch by the same numbers. (It
// remembers the last gesture and its pixels.) All this within the `kHistory` before the time before: what lasts longer
// is cut.
//
// Holds the frames of the last `beforeNs` and `kHistory`, and `kMostFrames` where a clock stands still. One thread.
class TroubleWindow {
public:
    static constexpr std::uint64_t kHistory = std::uint64_t{10} * 60 * 1'000'000'000;
    static constexpr std::size_t kMostFrames = 1'000'000; // a quarter of an hour of the fastest surface

    struct Handlers {
        std::function<void()> begin;
        // First the settings in force, with the time of the stretch's first frame.
        std::function<void(const Frame& frame)> frame;
        std::function<void()> end;
    };

    // `watch` outlives this and handles each frame before it comes here.
    TroubleWindow(const TroubleWatch& watch, std::uint64_t beforeNs, std::uint64_t afterNs, Handlers handlers)
        : _watch(watch), _beforeNs(beforeNs), _afterNs(afterNs), _handlers(std::move(handlers)) {}

    // Takes in a frame. The times should not decrease; a frame that is late counts as one of the newest time.
    void add(Frame frame);
    // Marks the newest frame as such a moment.
    void mark();
    // Called when no more frames come: ends a stretch in progress.
    void finish();

private:
    struct Waiting {
        std::uint64_t ns;
        bool isTouched;
        bool isClear;
        Frame frame;
    };

    [[nodiscard]] bool isKept() const;
    void keepWaiting();
    void forgetFirst();
    [[nodiscard]] std::size_t start() const;
    [[nodiscard]] std::size_t clearUpTo(std::size_t last) const;
    [[nodiscard]] bool isDecidedAlike(const Analysis::Touch& touch, std::size_t start) const;

    const TroubleWatch& _watch;
    const std::uint64_t _beforeNs;
    const std::uint64_t _afterNs;
    const Handlers _handlers;
    std::uint64_t _nowNs = 0;
    std::optional<std::uint64_t> _keptUntilNs; // of the stretch in progress
    std::deque<Waiting> _waiting;              // neither kept nor forgotten
    SettingsInForce _settings;                 // before the first that waits
};

} // namespace VeltoTouch::Bench
