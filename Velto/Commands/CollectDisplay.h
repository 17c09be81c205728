#pragma once

#include "Plugin/Reports/InputReport.h"
#include "Velto/Bench/Collector.h"
#include "Velto/Daemon/EventLoop.h"

#include <functional>
#include <memory>
#include <string>

namespace VeltoTouch::Velto {

// How `velto collect` speaks with a person: asks for gestures, shows the surface, takes keys. The recognizer's verdicts
// are not shown. On the loop's thread.
class CollectDisplay {
public:
    CollectDisplay() = default;
    CollectDisplay(const CollectDisplay&) = delete;
    CollectDisplay& operator=(const CollectDisplay&) = delete;
    virtual ~CollectDisplay() = default;

    // Called when the collector has entered a phase.
    virtual void phaseChanged(const Bench::Collector& collector) = 0;
    // Called after each image.
    virtual void imageCame(const InputReport::Image& /*image*/) {}
};

// Returns "tap volume-up", "slide volume-up to volume-down", "palm".
[[nodiscard]] std::string nameOf(const Surface::Step& gesture);

// Returns a display on the terminal's whole screen, if input and output are one; else one that writes lines to the
// standard output and takes a key from the standard input for each choice; if none comes, what is spoiled stays so.
// `press` is called with each key. `hasInput` says that the standard input is free for keys; else the screen takes them
// from the terminal. Called before the program has other threads. Throws std::runtime_error.
[[nodiscard]] std::unique_ptr<CollectDisplay> makeCollectDisplay(EventLoop& loop, const Bench::Collector& collector,
                                                                 std::function<void(char key)> press, bool hasInput);

} // namespace VeltoTouch::Velto
