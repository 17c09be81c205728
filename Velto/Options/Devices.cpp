#include "Velto/Options/Devices.h"

#include "Velto/Options/RecordingFiles.h"
#include "Velto/Output/Terminal.h"
#include "Velto/Surface/Devices.h"
#include "Velto/Surface/PipedDevice.h"
#include "Velto/Surface/PluggedIn.h"
#include "Velto/Surface/Scripts.h"
#include "Velto/Surface/SimulatedAccelerometer.h"

#include <filesystem>
#include <memory>
#include <stdexcept>

#include <fmt/format.h>
#include <unistd.h>

namespace VeltoTouch::Velto {
namespace {

using Surface::ConnectedDevice;
using Surface::Simulation;
using Surface::Step;

bool strip(std::string_view& text, std::string_view prefix) {
    if (!text.starts_with(prefix))
        return false;
    text.remove_prefix(prefix.size());
    return true;
}

std::vector<Step> parseSteps(std::string_view text) {
    std::vector<Step> steps;
    for (;;) {
        const auto comma = text.find(',');
        steps.push_back(Surface::parseStep(text.substr(0, comma)));
        if (comma == std::string_view::npos)
            return steps;
        text.remove_prefix(comma + 1);
    }
}

Simulation::StepSource stepsOf(const SimulatedSurface& surface, std::uint64_t seed) {
    if (surface.steps)
        return Surface::scriptOf(*surface.steps);
    return [user = std::make_shared<Surface::MadeUpUser>(seed)] { return std::optional(user->next()); };
}

// Connects each kind.
struct Connect {
    const std::string& name;
    double speed;

    ConnectedDevice operator()(const SimulatedSurface& surface) const {
        const Simulation::Options options;
        return {name,
                Surface::simulatedDevice(Simulation(options, stepsOf(surface, options.seed)), speed),
                {makeRef<Surface::SimulatedAccelerometer>()}};
    }
    ConnectedDevice operator()(const RecordedSurface& surface) const {
        const PipelineRecording recording = loadRecording(surface.file);
        if (const std::uint64_t settings = Surface::settingsIn(recording); settings > 0)
            complain(surface.file, fmt::format("left out {} recorded settings", settings));
        return {name, Surface::recordingPlayer(recording, speed), {makeRef<Surface::SilentAccelerometer>()}};
    }
    ConnectedDevice operator()(const FirstSurface& /*surface*/) const {
        return Surface::connectNode(Surface::findSurfaces().front().path);
    }
    ConnectedDevice operator()(const SurfaceNode& surface) const { return Surface::connectNode(surface.path); }
    ConnectedDevice operator()(const PipedSurface& /*surface*/) const {
        return {name, makeRef<Surface::PipedDevice>(STDIN_FILENO), {makeRef<Surface::SilentAccelerometer>()}};
    }
};

} // namespace

std::string DeviceChoice::file() const {
    const auto* recorded = std::get_if<RecordedSurface>(&surface);
    return recorded == nullptr ? "" : recorded->file;
}

std::string DeviceChoice::subject() const {
    if (std::holds_alternative<PipedSurface>(surface))
        return "standard input";
    return file().empty() ? name : file();
}

bool DeviceChoice::isPlayed() const noexcept {
    return std::holds_alternative<SimulatedSurface>(surface) || std::holds_alternative<RecordedSurface>(surface);
}

DeviceChoice parseDevice(std::string_view text) {
    const std::string name(text);
    if (text == "sim")
        return {.name = name, .surface = SimulatedSurface{}};
    if (strip(text, "sim:"))
        return {.name = name, .surface = SimulatedSurface{.steps = parseSteps(text)}};
    if (strip(text, "replay:") && !text.empty())
        return {.name = name, .surface = RecordedSurface{.file = std::string(text)}};
    if (text == "surface")
        return {.name = name, .surface = FirstSurface{}};
    if (text.starts_with("/dev/hidraw"))
        return {.name = name, .surface = SurfaceNode{.path = name}};
    if (text == "-")
        return {.name = name, .surface = PipedSurface{}};
    throw std::invalid_argument("sim, sim:STEP,..., replay:FILE, surface, /dev/hidrawN or - is wanted");
}

Watched parseWatched(const std::string& text) {
    std::error_code ignored;
    if (!text.starts_with("/dev/hidraw") && std::filesystem::exists(text, ignored))
        return {.name = text, .what = RecordedSurface{.file = text}};
    try {
        return {.name = text, .what = parseDevice(text)};
    } catch (const std::invalid_argument& error) {
        if (text.starts_with("sim:")) // a device in which a step is wrong
            throw;
        throw std::invalid_argument(fmt::format("'{}' is no file, and as a device {}", text, error.what()));
    }
}

ConnectedDevice connect(const DeviceChoice& choice, double speed) {
    return std::visit(Connect{.name = choice.name, .speed = speed}, choice.surface);
}

} // namespace VeltoTouch::Velto
