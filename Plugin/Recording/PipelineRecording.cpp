#include "Plugin/Recording/PipelineRecording.h"

#include "Plugin/Shared/Util.h"

#include <algorithm>
#include <set>
#include <string_view>
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

PipelineRecording::PipelineRecording(const PipelineRecording& other)
    : pipeline(other.pipeline), _frames(other._frames), _maxFrameCount(other._maxFrameCount) {}

PipelineRecording::PipelineRecording(PipelineRecording&& other) noexcept
    : pipeline(std::move(other.pipeline)), _frames(std::move(other._frames)), _maxFrameCount(other._maxFrameCount) {
    ++other._generation;
    other._play = {};
}

PipelineRecording& PipelineRecording::operator=(const PipelineRecording& other) {
    return *this = PipelineRecording(other);
}

PipelineRecording& PipelineRecording::operator=(PipelineRecording&& other) noexcept {
    pipeline = std::move(other.pipeline);
    _frames = std::move(other._frames);
    _maxFrameCount = other._maxFrameCount;
    ++_generation;
    _play = {};
    ++other._generation;
    other._play = {};
    return *this;
}

std::list<Frame> PipelineRecording::takeNode() {
    std::list<Frame> node;
    if (_spareFrames.empty())
        node.emplace_back();
    else
        node.splice(node.begin(), _spareFrames, _spareFrames.begin());
    return node;
}

void PipelineRecording::setState(std::uint64_t timestamp, const std::string& key, const Ref<Value>& value) noexcept {
    appendFrame(keyedFrame(Frame::Type::State, timestamp, key, value));
    if (pipeline)
        pipeline->setState(timestamp, key, value);
}

void PipelineRecording::handleInputReport(std::uint64_t timestamp, const std::uint8_t* report,
                                          std::size_t length) noexcept {
    std::list<Frame> node = takeNode();
    Frame& frame = node.front();
    frame.type = Frame::Type::InputReport;
    frame.timestampNs = Util::nanosecondsFromMachTime(timestamp);
    frame.report.assign(report, report + length);
    appendNode(node);
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
    std::list<Frame> node;
    node.push_back(std::move(frame));
    appendNode(node);
}

void PipelineRecording::appendNode(std::list<Frame>& node) noexcept {
    _frames.splice(_frames.end(), node);
    if (_maxFrameCount != 0 && _frames.size() / 2 >= _maxFrameCount) {
        _spareFrames = takeSurplus(_frames, _maxFrameCount);
        ++_generation;
        std::erase_if(_spareFrames, [](const Frame& frame) {
            return frame.type != Frame::Type::InputReport || !frame.key.empty() || frame.value != nullptr;
        });
    }
    _play.valid = false;
}

std::list<Frame> PipelineRecording::takeSurplus(std::list<Frame>& frames, std::uint64_t maxFrameCount) {
    std::list<Frame> removed;
    std::uint64_t keptCount = 0;            // frames that are no settings
    std::set<std::string_view> settingKeys; // of the settings kept since the last such frame
    for (auto frame = frames.end(); frame != frames.begin();) {
        --frame;
        if (frame->type == Frame::Type::State) {
            if (settingKeys.insert(frame->key).second)
                continue;
        } else if (keptCount < maxFrameCount) {
            ++keptCount;
            settingKeys.clear();
            continue;
        }
        const auto unwanted = frame++;
        removed.splice(removed.begin(), frames, unwanted);
    }
    return removed;
}

void PipelineRecording::trimFrames(std::list<Frame>& frames, std::uint64_t maxFrameCount) noexcept {
    (void)takeSurplus(frames, maxFrameCount);
}

void PipelineRecording::sortFrames(std::list<Frame>& frames) noexcept {
    const auto isEarlier = [](const Frame& a, const Frame& b) { return a.timestampNs < b.timestampNs; };
    if (!std::is_sorted(frames.begin(), frames.end(), isEarlier)) // the usual case, far cheaper than a sort
        frames.sort(isEarlier);
}

void PipelineRecording::trimFrames(std::uint64_t maxFrameCount) noexcept {
    _spareFrames.clear();
    const Frame* const next = nextFrame();
    const std::list<Frame> removed = takeSurplus(_frames, maxFrameCount);
    ++_generation;
    if (std::ranges::any_of(removed, [next](const Frame& frame) { return &frame == next; }))
        _play.valid = false;
}

void PipelineRecording::sortFrames() noexcept {
    sortFrames(_frames);
    ++_generation;
}

void PipelineRecording::setMaxFrameCount(std::uint64_t count) noexcept {
    _maxFrameCount = count;
    if (count != 0)
        trimFrames(count);
}

} // namespace VeltoTouch
