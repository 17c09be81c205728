#include "Plugin/Algs/VirtualImage.h"
#include "Python/Arguments.h"
#include "Python/Arrays.h"
#include "Python/Files.h"
#include "Python/Play.h"
#include "Python/Recording.h"
#include "Python/Score.h"
#include "Python/Settings.h"
#include "Python/Simulate.h"
#include "Python/Source.h"
#include "Velto/Files/RecordingPaths.h"
#include "Velto/Surface/Scripts.h"

#include <cstdint>
#include <string>
#include <vector>

// The extension module, plain functions; the package around it (velto/__init__.py) gives them their form.

namespace VeltoTouch::Python {
namespace {

void registerStates() {
    PYBIND11_NUMPY_DTYPE(StateRow, ns, frame, timeMs, touchScore, classifier, signalPerTouchDuration, signalPerDuration,
                         nonActivePixels, timeDurationRatio, tapScore, aboveNoise, touching, holding, suppressingHold,
                         holdTimedOut, tapCandidate, tapRejected, tapDetected, activeRegion, previousRegion,
                         eventRegion, pads, groups);
    PYBIND11_NUMPY_DTYPE(TapRow, touch, endNs, signalPerTouchDuration, signalPerDuration, nonActivePixels,
                         timeDurationRatio, tapScore, tapRejected);
}

// Lines of events and of touches; states and ranked values, or None; tap features.
py::tuple playRecording(const Recording& recording, const JudgedSettings& settings, bool wantsStates) {
    Played played;
    {
        const py::gil_scoped_release others;
        played = play(recording, settings.list, wantsStates);
    }
    py::object states = py::none();
    py::object ranked = py::none();
    if (wantsStates) {
        states = arrayOf(std::move(played.states));
        ranked = arrayOf(std::move(played.ranked));
    }
    return py::make_tuple(played.events, played.touches, states, ranked, arrayOf(std::move(played.taps)));
}

// `given`: a recording, or what one is read from.
std::string scoreGiven(const py::object& given, const JudgedSettings& settings) {
    if (py::isinstance<Recording>(given)) {
        const auto& recording = given.cast<const Recording&>();
        const py::gil_scoped_release others;
        return scoreLines(recording, settings.list);
    }
    const Source source(given);
    const py::gil_scoped_release others;
    return scoreLines(source, settings.list);
}

py::list filesAt(const py::object& given) {
    const std::string path = pathOf(given);
    std::vector<std::string> files;
    {
        const py::gil_scoped_release others;
        files = Files::recordingsAt(path);
    }
    py::list texts;
    for (const std::string& file : files)
        texts.append(textOf(file));
    return texts;
}

Recording simulateScript(const py::list& script, py::handle seed, py::handle rate, py::handle noise,
                         py::handle random) {
    using Surface::Simulation;
    std::vector<std::string> steps;
    for (const py::handle step : script)
        steps.push_back(textIn("script: a step", step));
    const Simulation::Options options{.seed = numberIn<std::uint64_t>("seed", seed, 0),
                                      .rateHz = numberIn("rate", rate, 1U, Simulation::kHighestRateHz),
                                      .noise = numberIn("noise", noise, 0U, Simulation::kHighestNoise)};
    const auto madeUpGestures = numberIn("random", random, 0U, Surface::kMostMadeUp);
    const py::gil_scoped_release others;
    return simulate(steps, options, madeUpGestures);
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
    py::class_<JudgedSettings>(module, "JudgedSettings").def(py::init(&settingsOf));
    module.def("play", &playRecording);
    module.def("score", &scoreGiven);
    module.def("total", &totalLine, py::call_guard<py::gil_scoped_release>());
    module.def("files", &filesAt);
    module.def("simulate", &simulateScript);
    module.attr("REGIONS") = tupleOf(regionNames());
    module.attr("GROUPS") = tupleOf(VirtualImage().names);
}

} // namespace VeltoTouch::Python
