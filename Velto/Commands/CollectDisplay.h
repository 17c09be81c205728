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

    // After the collector has entered a phase, and after each image.
    virtual void phaseChanged(const Bench::Collector& collector) = 0;
    virtual void imageCame(const InputReport::Image& /*image*/) {}
};

// "tap volume-up", "slide volume-up to volume-down", "palm".
[[nodiscard]] std::string nameOf(const Surface::Step& gesture);

// The terminal's whole screen, where input and output are one; else lines on the standard output, and keys from the
// standard input, one whenever there is a choice: without one, what is spoiled stays so. `press` is called with each
// key. `hasInput`: the standard input is free for keys; else the screen takes them from the terminal. Before the
// program has other threads. Throws std::runtime_error.
[[nodiscard]] std::unique_ptr<CollectDisplay> makeCollectDisplay(EventLoop& loop, const Bench::Collector& collector,
                                                                 std::function<void(char key)> press, bool hasInput);

} // namespace VeltoTouch::Velto
