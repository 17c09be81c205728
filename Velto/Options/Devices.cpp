#include "Velto/Options/Devices.h"

#include "Platform/Linux/HidrawDevice.h"
#include "Platform/Linux/IIOAccelerometer.h"
#include "Velto/Options/RecordingFiles.h"
#include "Velto/Output/Terminal.h"
#include "Velto/Surface/Devices.h"
#include "Velto/Surface/Scripts.h"
#include "Velto/Surface/SimulatedAccelerometer.h"
#include "Velto/Surface/SurfaceMatch.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using namespace VeltoTouch::Surface;

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
        steps.push_back(parseStep(text.substr(0, comma)));
        if (comma == std::string_view::npos)
            return steps;
        text.remove_prefix(comma + 1);
    }
}

Simulation::StepSource stepsOf(const DeviceChoice& choice, std::uint64_t seed) {
    if (choice.steps)
        return scriptOf(*choice.steps);
    return [user = std::make_shared<MadeUpUser>(seed)] { return std::optional(user->next()); };
}

Ref<HIDDeviceBackend> backendOf(const DeviceChoice& choice, double speed) {
    switch (choice.kind) {
    case DeviceChoice::Kind::Simulated: {
        const Simulation::Options options;
        return simulatedDevice(Simulation(options, stepsOf(choice, options.seed)), speed);
    }
    case DeviceChoice::Kind::Recorded: {
        const PipelineRecording recording = loadRecording(choice.file);
        if (const std::uint64_t settings = settingsIn(recording); settings > 0)
            complain(choice.file, fmt::format("left out {} recorded settings", settings));
        return recordingPlayer(recording, speed);
    }
    case DeviceChoice::Kind::FirstSurface:
    case DeviceChoice::Kind::HidRaw:
        return makeRef<HidrawDevice>(choice.name);
    }
    throw std::logic_error("no such kind of device");
}

std::vector<Ref<HIDEventService>> accelerometersOf(const DeviceChoice& choice) {
    switch (choice.kind) {
    case DeviceChoice::Kind::Simulated:
        return {makeRef<SimulatedAccelerometer>()};
    case DeviceChoice::Kind::FirstSurface:
    case DeviceChoice::Kind::HidRaw:
        return findAccelerometers();
    case DeviceChoice::Kind::Recorded:
        break;
    }
    return {};
}

// With the name of the node in place of "surface".
DeviceChoice found(DeviceChoice choice) {
    if (choice.kind == DeviceChoice::Kind::FirstSurface)
        choice.name = findSurfaces().front().path;
    return choice;
}

} // namespace

DeviceChoice parseDevice(std::string_view text) {
    DeviceChoice choice{.kind = DeviceChoice::Kind::Simulated, .name = std::string(text), .steps = {}, .file = {}};
    if (text == "sim")
        return choice;
    if (strip(text, "sim:")) {
        choice.steps = parseSteps(text);
    } else if (strip(text, "replay:") && !text.empty()) {
        choice.kind = DeviceChoice::Kind::Recorded;
        choice.file = text;
    } else if (text == "surface") {
        choice.kind = DeviceChoice::Kind::FirstSurface;
    } else if (text.starts_with("/dev/hidraw")) {
        choice.kind = DeviceChoice::Kind::HidRaw;
    } else {
        throw std::invalid_argument("sim, sim:STEP,..., replay:FILE, surface or /dev/hidrawN is wanted");
    }
    return choice;
}

std::vector<HidrawNode> findSurfaces() {
    std::vector<HidrawNode> surfaces = findHidrawNodes(isSurface);
    if (surfaces.empty())
        throw std::runtime_error("no surface is plugged in");
    return surfaces;
}

ConnectedDevice::ConnectedDevice(const DeviceChoice& choice, double speed)
    : _choice(found(choice)), _backend(backendOf(_choice, speed)), _accelerometers(accelerometersOf(_choice)),
      _service(registerDevice(_backend)) {
    std::ranges::for_each(_accelerometers, registerEventService);
}

ConnectedDevice::~ConnectedDevice() {
    std::ranges::for_each(_accelerometers, unregisterEventService);
    unregisterDevice(_service);
}

} // namespace VeltoTouch::Velto
