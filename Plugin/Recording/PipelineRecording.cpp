#include "Plugin/Recording/PipelineRecording.h"

#include "Plugin/Recording/ContainerMigration.h"
#include "Plugin/Recording/ContainerReader.h"
#include "Plugin/Recording/ContainerWriter.h"
#include "Plugin/Shared/ClockConversion.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace VeltoTouch {
namespace {

Frame keyedFrame(Frame::Type type, std::uint64_t timestamp, const std::string& key, const Ref<Value>& value) {
    return {.type = type,
            .timestampNs = Util::nanosecondsFromMachTime(timestamp),
            .key = key,
            .value = value,
            .report = {}};
}

} // namespace

PipelineRecording::PipelineRecording(const Data* container) {
    if (container == nullptr)
        throw std::invalid_argument("json not supplied");
    _frames = FrameList(readContainer(*container).frames);
}

void PipelineRecording::setState(std::uint64_t timestamp, const std::string& key, const Ref<Value>& value) noexcept {
    appendFrame(keyedFrame(Frame::Type::State, timestamp, key, value));
    if (pipeline)
        pipeline->setState(timestamp, key, value);
}

void PipelineRecording::handleInputReport(std::uint64_t timestamp, const std::uint8_t* report,
                                          std::size_t length) noexcept {
    _frames.appendReport(Util::nanosecondsFromMachTime(timestamp), {report, length});
    _play.stop();
    if (pipeline)
        pipeline->handleInputReport(timestamp, report, length);
}

void PipelineRecording::handleMetadata(std::uint64_t timestamp, const std::string& key,
                                       const Ref<Value>& value) noexcept {
    appendFrame(keyedFrame(Frame::Type::Metadata, timestamp, key, value));
    if (pipeline)
        pipeline->handleMetadata(timestamp, key, value);
}

void PipelineRecording::appendFrame(Frame frame) noexcept {
    _frames.append(std::move(frame));
    _play.stop();
}

void PipelineRecording::trimFrames(std::list<Frame>& frames, std::uint64_t maxFrameCount) noexcept {
    takeSurplus(frames, maxFrameCount);
}

void PipelineRecording::sortFrames(std::list<Frame>& frames) noexcept { sortByTime(frames); }

void PipelineRecording::trimFrames(std::uint64_t maxFrameCount) noexcept {
    const Frame* const next = _play.next();
    const std::list<Frame> removed = _frames.trim(maxFrameCount);
    if (std::ranges::any_of(removed, [next](const Frame& frame) { return &frame == next; }))
        _play.stop();
}

void PipelineRecording::sortFrames() noexcept { _frames.sort(); }

void PipelineRecording::setMaxFrameCount(std::uint64_t count) noexcept {
    _frames.setBound(count);
    if (count != 0)
        trimFrames(count);
}

Ref<Data> PipelineRecording::json() noexcept {
    if (const std::uint64_t bound = _frames.bound(); bound != 0)
        trimFrames(bound);
    sortFrames();
    return makeRef<Data>(writeContainer(frames()));
}

Ref<Value> PipelineRecording::migrateSerializedContainer(const Ref<Value>& container) {
    return migrateContainer(container);
}

} // namespace VeltoTouch
