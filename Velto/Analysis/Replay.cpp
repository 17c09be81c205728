#include "Velto/Analysis/Replay.h"

#include "Plugin/Shared/Keys.h"

#include <algorithm>

namespace VeltoTouch::Analysis {
namespace {

// The pipeline's, with keys as recordings hold them.
std::vector<Setting> recordedFormOf(const std::vector<Setting>& settings) {
    std::vector<Setting> recorded;
    for (const Setting& setting : settings) {
        if (const auto key = Keys::belowPipeline(setting.key))
            recorded.push_back({.key = std::string(*key), .value = setting.value});
    }
    return recorded;
}

// Stands between a recording and the pipeline and keeps back the recording's writes of some keys.
class SettingsFilter final : public PipelineInput {
public:
    SettingsFilter(std::shared_ptr<Pipeline> target, std::vector<Setting> settings)
        : _target(std::move(target)), _settings(std::move(settings)) {}

    void setState(std::uint64_t timestamp, const std::string& key, const Ref<Value>& value) override {
        if (std::ranges::find(_settings, key, &Setting::key) == _settings.end())
            _target->setState(timestamp, key, value);
        else
            ++leftOut;
    }
    void handleInputReport(std::uint64_t timestamp, const std::uint8_t* report, std::size_t length) override {
        _target->handleInputReport(timestamp, report, length);
    }
    void handleMetadata(std::uint64_t timestamp, const std::string& key, const Ref<Value>& value) override {
        _target->handleMetadata(timestamp, key, value);
    }

    std::uint64_t leftOut = 0;

private:
    const std::shared_ptr<Pipeline> _target;
    const std::vector<Setting> _settings; // that take the place of the recording's
};

} // namespace

void Replay::installHandlers(HostTime start) {
    _pipeline->imageHandler = [this](std::uint64_t, const InputReport::Image& image) {
        ++_counts.images;
        if (frameHandler)
            _image = image;
    };
    _pipeline->hidEventsHandler = [this, start](std::uint64_t, const auto& events) {
        _counts.events += events.size();
        showFrame();
        translateEvents(events, _gestures);
        for (Gesture& gesture : _gestures) {
            gesture.time -= start;
            gestureHandler(gesture);
        }
    };
}

void Replay::installDisturbanceHandlers(HostTime start) {
    const auto disturb = [this, start](std::uint64_t timestamp, Disturbance disturbance) {
        disturbance.time = hostTimeOf(timestamp) - start;
        if (_pipeline->hasLastFrame)
            disturbance.lastFrame = _pipeline->lastFrameNumber;
        disturbanceHandler(disturbance);
    };
    using enum Disturbance::Kind;
    _pipeline->invalidReportHandler = [=, this](std::uint64_t timestamp, const std::uint8_t* report,
                                                std::size_t length) {
        ++_counts.invalidReports;
        disturb(timestamp, {.kind = InvalidReport, .report = {report, length}});
    };
    _pipeline->disjointImageHandler = [=](std::uint64_t timestamp, std::uint32_t, const InputReport::Image& image) {
        disturb(timestamp, {.kind = Gap, .frame = image.frameNumber});
    };
    _pipeline->firmwareEventHandler = [=, this](std::uint64_t timestamp, const InputReport::FirmwareEvent& event) {
        if (!event.isReset())
            return;
        if (frameHandler)
            _image = InputReport::Image{};
        disturb(timestamp, {.kind = Reset});
    };
}

// The recognizer has processed the image by the time its events come out, or without any.
void Replay::showFrame() {
    if (!_image)
        return;
    frameHandler(_pipeline->algs, *_image);
    _image.reset();
}

void Replay::play(PipelineRecording& recording, const std::vector<Setting>& settings, float speed) {
    const std::vector<Setting> written = recordedFormOf(settings);
    const auto filter = std::make_shared<SettingsFilter>(_pipeline, written);
    recording.pipeline = filter;
    recording.playReset();
    installHandlers(hostTimeOf(recording.playStartTime()));
    installDisturbanceHandlers(hostTimeOf(recording.playStartTime()));
    for (const Setting& setting : written)
        _pipeline->setState(recording.playStartTime(), setting.key, setting.value);
    _counts.frames = recording.frames().size();
    if (_counts.frames > 0)
        _counts.duration = HostTime(recording.frames().back().timestampNs - recording.frames().front().timestampNs);
    while (recording.playCanContinue()) {
        recording.playNextFrame(speed);
        showFrame();
        frameDone();
    }
    _counts.settingsLeftOut = filter->leftOut;
}

} // namespace VeltoTouch::Analysis
