#include "Plugin/Service/AccelCapture.h"

#include "Plugin/Recording/AccelMetadata.h"

namespace VeltoTouch {
namespace {

constexpr std::size_t kSamplesBeforeDigitizerEvent = 100;
constexpr std::uint64_t kSamplesAfterDigitizerEvent = 100;

void record(const AccelSample& sample, PipelineInput& recording) {
    recording.handleMetadata(sample.timestamp, AccelMetadata::kKey,
                             AccelMetadata::valueOf(sample.x, sample.y, sample.z));
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
