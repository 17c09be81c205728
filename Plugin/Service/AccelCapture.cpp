#include "Plugin/Service/AccelCapture.h"

#include <utility>
#include <vector>

namespace VeltoTouch {
namespace {

constexpr std::size_t kSamplesBeforeDigitizerEvent = 100;
constexpr std::uint64_t kSamplesAfterDigitizerEvent = 100;

Ref<Value> valueOf(const AccelSample& sample) {
    std::vector<Dictionary::Entry> axes;
    axes.push_back({.key = "X", .value = Number::withFloat(sample.x)});
    axes.push_back({.key = "Y", .value = Number::withFloat(sample.y)});
    axes.push_back({.key = "Z", .value = Number::withFloat(sample.z)});
    return makeRef<Dictionary>(std::move(axes));
}

void record(const AccelSample& sample, PipelineInput& recording) {
    recording.handleMetadata(sample.timestamp, "Accel", valueOf(sample));
}

} // namespace

void AccelCapture::captureAround() noexcept { _samplesNeededCount = kSamplesAfterDigitizerEvent; }

void AccelCapture::add(const AccelSample& sample, PipelineInput& recording) {
    if (_samplesNeededCount == 0) {
        _samples.push_back(sample);
        while (_samples.size() > kSamplesBeforeDigitizerEvent)
            _samples.pop_front();
        return;
    }
    while (!_samples.empty()) {
        record(_samples.front(), recording);
        _samples.pop_front();
    }
    record(sample, recording);
    --_samplesNeededCount;
}

} // namespace VeltoTouch
