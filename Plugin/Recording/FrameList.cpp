#include "Plugin/Recording/FrameList.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

namespace VeltoTouch {

std::list<Frame> takeSurplus(std::list<Frame>& frames, std::uint64_t maxFrameCount) {
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

void sortByTime(std::list<Frame>& frames) {
    const auto isEarlier = [](const Frame& a, const Frame& b) { return a.timestampNs < b.timestampNs; };
    if (!std::is_sorted(frames.begin(), frames.end(), isEarlier)) // the usual case, far cheaper than a sort
        frames.sort(isEarlier);
}

FrameList::FrameList(const FrameList& other) : _frames(other._frames), _bound(other._bound) {}

FrameList::FrameList(FrameList&& other) noexcept : _frames(std::move(other._frames)), _bound(other._bound) {
    ++other._generation;
}

FrameList& FrameList::operator=(const FrameList& other) { return *this = FrameList(other); }

FrameList& FrameList::operator=(FrameList&& other) noexcept {
    _frames = std::move(other._frames);
    _bound = other._bound;
    ++_generation;
    ++other._generation;
    return *this;
}

Frame& FrameList::addFrame() {
    if (_spares.empty())
        return _frames.emplace_back();
    _frames.splice(_frames.end(), _spares, _spares.begin());
    return _frames.back();
}

void FrameList::append(Frame frame) {
    _frames.push_back(std::move(frame));
    trimAtTwiceTheBound();
}

void FrameList::appendReport(std::uint64_t timestampNs, std::span<const std::uint8_t> report) {
    Frame& frame = addFrame();
    frame.type = Frame::Type::InputReport;
    frame.timestampNs = timestampNs;
    frame.report.assign(report.data(), report.data() + report.size());
    trimAtTwiceTheBound();
}

// Of the spare frames only reports are kept, which have no key and no value to be cleared.
void FrameList::trimAtTwiceTheBound() {
    if (_bound == 0 || _frames.size() / 2 < _bound)
        return;
    _spares = takeSurplus(_frames, _bound);
    ++_generation;
    std::erase_if(_spares, [](const Frame& frame) {
        return frame.type != Frame::Type::InputReport || !frame.key.empty() || frame.value != nullptr;
    });
}

std::list<Frame> FrameList::trim(std::uint64_t maxFrameCount) {
    releaseSpareMemory();
    ++_generation;
    return takeSurplus(_frames, maxFrameCount);
}

void FrameList::sort() {
    sortByTime(_frames);
    ++_generation;
}

void FrameList::reserve(std::size_t count, std::size_t reportLength) {
    for (std::size_t i = 0; i < count; ++i)
        _spares.emplace_back().report.reserve(reportLength);
}

void FrameList::recycle() noexcept { _spares.splice(_spares.end(), _frames); }

void FrameList::appendCopy(const Frame& frame) { addFrame() = frame; }

} // namespace VeltoTouch
