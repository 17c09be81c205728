#include "Plugin/Recording/PipelineRecording.h"

#include "Platform/Clock.h"
#include "Plugin/Shared/Util.h"

#include <stdexcept>

namespace VeltoTouch {

void PipelineRecording::playReset() noexcept {
    _play = {.valid = true,
             .iterator = _frames.begin(),
             .startTimeMach = mach_absolute_time(),
             .lastFrameTimeNs = std::nullopt};
}

const Frame* PipelineRecording::nextFrame() const noexcept {
    return _play.valid && _play.iterator != _frames.end() ? &*_play.iterator : nullptr;
}

bool PipelineRecording::playCanContinue() const noexcept { return nextFrame() != nullptr; }

std::uint64_t PipelineRecording::playbackPauseUs(std::uint64_t fromNs, std::uint64_t toNs, float speed) noexcept {
    if (toNs <= fromNs)
        return 0;
    const float divisor = speed > 0.0F ? speed : 1.0F;
    return unsignedReading(static_cast<double>(static_cast<float>(toNs - fromNs) / divisor / 1000.0F));
}

void PipelineRecording::playNextFrame(float speed) {
    const Frame* const frame = nextFrame();
    if (frame == nullptr)
        throw std::runtime_error("playback finished");
    ++_play.iterator;
    if (_play.lastFrameTimeNs) {
        if (const auto pause = playbackPauseUs(*_play.lastFrameTimeNs, frame->timestampNs, speed); pause > 0)
            usleep(pause);
    }
    _play.lastFrameTimeNs = frame->timestampNs;
    if (!pipeline)
        return;

    const std::uint64_t sinceFirstNs = frame->timestampNs - _frames.front().timestampNs; // wraps for an earlier one
    const std::uint64_t timestamp = _play.startTimeMach + Util::machTimeFromNanoseconds(sinceFirstNs);
    switch (frame->type) {
    case Frame::Type::State:
        pipeline->setState(timestamp, frame->key, frame->value);
        break;
    case Frame::Type::InputReport:
        pipeline->handleInputReport(timestamp, frame->report.data(), frame->report.size());
        break;
    case Frame::Type::Metadata:
        pipeline->handleMetadata(timestamp, frame->key, frame->value);
        break;
    }
}

} // namespace VeltoTouch
