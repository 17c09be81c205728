#include "Velto/Options/Devices.h"

#include "Velto/Options/RecordingFiles.h"
#include "Velto/Output/Terminal.h"
#include "Velto/Surface/Alternatives.h"
#include "Velto/Surface/Devices.h"
#include "Velto/Surface/PipedDevice.h"
#include "Velto/Surface/PluggedIn.h"
#include "Velto/Surface/Scripts.h"
#include "Velto/Surface/SimulatedAccelerometer.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>
#include <unistd.h>

namespace VeltoTouch::Velto {
namespace {

using Surface::ConnectedDevice;
using Surface::Simulation;
using Surface::Step;

constexpr std::string_view kScript = "sim:";
constexpr std::string_view kNode = "/dev/hidraw";

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

using MaybeSurface = std::optional<AnySurface>;
MaybeSurface readMadeUp(std::string_view /*nothing*/) { return SimulatedSurface{}; }
MaybeSurface readScript(std::string_view steps) { return SimulatedSurface{.steps = parseSteps(steps)}; }
MaybeSurface readRecorded(std::string_view file) {
    return file.empty() ? std::nullopt : MaybeSurface(RecordedSurface{.file = std::string(file)});
}
MaybeSurface readFirst(std::string_view /*nothing*/) { return FirstSurface{}; }
MaybeSurface readNode(std::string_view number) { return SurfaceNode{.path = std::string(kNode).append(number)}; }
MaybeSurface readPiped(std::string_view /*nothing*/) { return PipedSurface{}; }

using enum DeviceForm::Completion;
constexpr std::array kForms{
    DeviceForm{"sim", "", "the simulated surface with a made-up user, without end", Word, readMadeUp},
    DeviceForm{kScript, "STEP,...", "the simulated surface, steps as in velto simulate --help", Opening, readScript},
    DeviceForm{"replay:", "FILE", "a recording's reports; its settings are left out", FilePrefix, readRecorded},
    DeviceForm{"surface", "", "the first surface on this machine", Word, readFirst},
    DeviceForm{kNode, "N", "a surface on this machine, as listed by velto devices", Nodes, readNode},
    DeviceForm{"-", "", "reports on the standard input, as hexadecimal lines or VTR1 records", None, readPiped,
               "the standard input cannot be served (velto run, view and dump read it)"},
};

[[noreturn]] void refuse() {
    std::vector<std::string> forms;
    std::ranges::transform(kForms, std::back_inserter(forms), &DeviceForm::text);
    throw std::invalid_argument(Surface::alternatives(std::move(forms)) + " is wanted");
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

std::span<const DeviceForm> deviceForms() noexcept { return kForms; }

const DeviceForm* formOf(std::string_view device) noexcept {
    const auto* const found =
        std::ranges::find_if(kForms, [device](const DeviceForm& form) { return form.fits(device); });
    return found == kForms.end() ? nullptr : found;
}

DeviceChoice parseDevice(std::string_view text) {
    const DeviceForm* const form = formOf(text);
    if (form == nullptr)
        refuse();
    std::optional<AnySurface> surface = form->read(text.substr(form->opening.size()));
    if (!surface)
        refuse();
    return {.name = std::string(text), .surface = *std::move(surface)};
}

Watched parseWatched(const std::string& text) {
    std::error_code ignored;
    if (!text.starts_with(kNode) && std::filesystem::exists(text, ignored))
        return {.name = text, .what = RecordedSurface{.file = text}};
    try {
        return {.name = text, .what = parseDevice(text)};
    } catch (const std::invalid_argument& error) {
        if (text.starts_with(kScript)) // a device in which a step is wrong
            throw;
        throw std::invalid_argument(fmt::format("'{}' is no file, and as a device {}", text, error.what()));
    }
}

ConnectedDevice connect(const DeviceChoice& choice, double speed) {
    return std::visit(Connect{.name = choice.name, .speed = speed}, choice.surface);
}

} // namespace VeltoTouch::Velto
