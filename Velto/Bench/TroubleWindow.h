#pragma once

#include "Plugin/Recording/Frame.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace VeltoTouch::Bench {

// Newest writes of settings, by key, without the keys that act and set nothing.
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
//   moments             x       x                        x
//   kept          ( ............... )              ( ......... )
//
// Holds the frames of the last `beforeNs` and no more. One thread.
class TroubleWindow {
public:
    struct Handlers {
        std::function<void()> begin;
        // First the settings in force, with the time of the stretch's first frame.
        std::function<void(const Frame& frame)> frame;
        std::function<void()> end;
    };

    TroubleWindow(std::uint64_t beforeNs, std::uint64_t afterNs, Handlers handlers)
        : _beforeNs(beforeNs), _afterNs(afterNs), _handlers(std::move(handlers)) {}

    // Takes in a frame. The times should not decrease; a frame that is late counts as one of the newest time.
    void add(Frame frame);
    // The newest frame is such a moment.
    void mark();
    // No more frames come: ends a stretch.
    void finish();

private:
    struct Waiting {
        std::uint64_t ns;
        Frame frame;
    };

    void keepWaiting();
    void forgetOld();

    const std::uint64_t _beforeNs;
    const std::uint64_t _afterNs;
    const Handlers _handlers;
    std::uint64_t _nowNs = 0;
    std::optional<std::uint64_t> _keptUntilNs; // of the stretch in progress
    std::deque<Waiting> _waiting;              // neither kept nor forgotten
    SettingsInForce _settings;                 // before the first that waits
};

} // namespace VeltoTouch::Bench
