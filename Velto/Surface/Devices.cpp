#include "Velto/Surface/Devices.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace VeltoTouch::Surface {
namespace {

// The controller's feature reports: ten for its makers, whose content nothing interprets, and how long its button is
// to be held for a factory reset, in milliseconds.
PlayedDevice::FeatureReports controllerReports() {
    return {
        {0x04, {0x04, 0x13, 0x00}},
        {0x10, {0x10, 0x01, 0x02}},
        {0x11, {0x11, 0x0F, 0x17}},
        {0x12, {0x12, 0x00, 0x00, 0x00, 0x00}},
        {0x13, {0x13, 0xC8, 0x00}},
        {0x1D, {0x1D, 0x01}},
        {0x1F, {0x1F, 0x88, 0x13, 0x00, 0x00}}, // 5000
        {0x32, {0x32, 0x4B, 0x00, 0x32, 0x00}},
        {0x3B, {0x3B, 0x00}},
        {0x3C, {0x3C, 0x64, 0x00}},
        {0x3F, {0x3F, 0xFF}},
    };
}

} // namespace

Ref<PlayedDevice> simulatedDevice(Simulation simulation, double speed) {
    struct State {
        Simulation simulation;
        std::optional<Simulation::Report> report; // the one that was given last
    };
    const auto state = std::make_shared<State>(State{.simulation = std::move(simulation), .report = {}});
    const auto next = [state]() -> std::optional<PlayedDevice::TimedReport> {
        state->report = state->simulation.next();
        if (!state->report)
            return std::nullopt;
        return PlayedDevice::TimedReport{.timestampNs = state->report->timestampNs, .bytes = state->report->bytes()};
    };
    return makeRef<PlayedDevice>(next, speed, surfaceProperties("Simulated Touch Surface", "SIM-1"),
                                 controllerReports());
}

Ref<PlayedDevice> recordingPlayer(const PipelineRecording& recording, double speed) {
    const auto frames = std::make_shared<std::list<Frame>>(recording.frames());
    frames->remove_if([](const Frame& frame) { return frame.type != Frame::Type::InputReport; });
    PipelineRecording::sortFrames(*frames);
    const auto next = [frames, frame = frames->cbegin()]() mutable -> std::optional<PlayedDevice::TimedReport> {
        if (frame == frames->cend())
            return std::nullopt;
        const Frame& current = *frame++;
        return PlayedDevice::TimedReport{.timestampNs = current.timestampNs, .bytes = current.report};
    };
    return makeRef<PlayedDevice>(next, speed, surfaceProperties("Recorded Touch Surface", "REC-1"));
}

std::uint64_t settingsIn(const PipelineRecording& recording) {
    const auto isSetting = [](const Frame& frame) { return frame.type == Frame::Type::State; };
    return static_cast<std::uint64_t>(std::ranges::count_if(recording.frames(), isSetting));
}

} // namespace VeltoTouch::Surface
