#include "Plugin/Algs/VirtualImage.h"
#include "Python/Arrays.h"
#include "Python/Play.h"
#include "Python/Recording.h"
#include "Python/Score.h"
#include "Python/Settings.h"
#include "Python/Simulate.h"

#include <cstdint>
#include <string>
#include <vector>

#include <pybind11/stl.h>

// The extension module, plain functions; the package around it (velto/__init__.py) gives them their form.

namespace VeltoTouch::Python {
namespace {

using WithoutLock = py::call_guard<py::gil_scoped_release>;

void registerStates() {
    PYBIND11_NUMPY_DTYPE(StateRow, ns, frame, timeMs, touchScore, classifier, signalPerTouchDuration, signalPerDuration,
                         nonActivePixels, timeDurationRatio, tapScore, aboveNoise, touching, holding, suppressingHold,
                         holdTimedOut, tapCandidate, tapRejected, tapDetected, activeRegion, previousRegion,
                         eventRegion, pads, groups);
    PYBIND11_NUMPY_DTYPE(TapRow, touch, endNs, signalPerTouchDuration, signalPerDuration, nonActivePixels,
                         timeDurationRatio, tapScore, tapRejected);
}

// Lines of events and of touches; states and ranked values, or None; tap features.
py::tuple playRecording(const Recording& recording, const py::dict& settings, bool wantsStates) {
    const std::vector<Analysis::Setting> list = settingsOf(settings);
    Played played;
    {
        const py::gil_scoped_release others;
        played = play(recording, list, wantsStates);
    }
    py::object states = py::none();
    py::object ranked = py::none();
    if (wantsStates) {
        states = arrayOf(std::move(played.states));
        ranked = arrayOf(std::move(played.ranked));
    }
    return py::make_tuple(played.events, played.touches, states, ranked, arrayOf(std::move(played.taps)));
}

std::string scoreRecording(const Recording& recording, const py::dict& settings) {
    const std::vector<Analysis::Setting> list = settingsOf(settings);
    const py::gil_scoped_release others;
    return scoreLines(recording, list);
}

Recording simulateScript(const std::vector<std::string>& steps, std::uint64_t seed, std::uint32_t rateHz,
                         std::uint32_t noise, std::uint32_t madeUpGestures) {
    return simulate(steps, {.seed = seed, .rateHz = rateHz, .noise = noise}, madeUpGestures);
}

// Names by number: of the regions, and of the columns of a state.
template <class Names>
py::tuple tupleOf(const Names& names) {
    py::list list;
    for (const std::string_view name : names)
        list.append(py::str(name.data(), name.size()));
    return list;
}

std::vector<std::string_view> regionNames() {
    std::vector<std::string_view> names;
    for (std::size_t i = 0; i < kRegionCount; ++i)
        names.push_back(nameOf(static_cast<PixelRegion>(i)));
    return names;
}

} // namespace

PYBIND11_MODULE(_velto, module) {
    bindRecording(module);
    registerStates();
    module.def("play", &playRecording);
    module.def("score", &scoreRecording);
    module.def("failed", &failedLine);
    module.def("total", &totalLine, WithoutLock());
    module.def("simulate", &simulateScript, WithoutLock());
    module.attr("REGIONS") = tupleOf(regionNames());
    module.attr("GROUPS") = tupleOf(VirtualImage().names);
}

} // namespace VeltoTouch::Python
