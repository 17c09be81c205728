#include "Velto/Page/PlayObject.h"

#include "Plugin/Shared/Keys.h"
#include "Velto/Analysis/InvalidReport.h"
#include "Velto/Analysis/LineMembers.h"
#include "Velto/Analysis/Pairing.h"
#include "Velto/Analysis/Replay.h"
#include "Velto/Analysis/Score.h"
#include "Velto/Analysis/Track.h"
#include "Velto/Page/JSONText.h"

#include <algorithm>
#include <list>
#include <optional>
#include <string_view>
#include <utility>

#include <fmt/format.h>

namespace VeltoTouch::Page {
namespace {

using namespace Analysis;

std::uint64_t nsOf(HostTime time) { return static_cast<std::uint64_t>(time.count()); }

std::string settingsArray(const std::vector<Setting>& settings) {
    return arrayOf(settings, [](const Setting& setting) {
        return fmt::format("[{},{}]", quoted(setting.key), quoted(JSON::text(setting.value.get())));
    });
}

std::string disturbanceText(const Disturbance& disturbance) {
    switch (disturbance.kind) {
    case Disturbance::Kind::InvalidReport:
        return "invalid report: " + faultOf(disturbance.report);
    case Disturbance::Kind::Gap:
        return fmt::format("gap: image {} comes after image {}", disturbance.frame, disturbance.lastFrame.value_or(0));
    case Disturbance::Kind::Reset:
        return "firmware reset";
    }
    return {};
}

} // namespace

void PlayObject::addTouches(const Play& play) {
    const std::vector<const Label*> labels = labelsByTouch(play.labels, play.touches);
    for (const Touch& touch : play.touches) {
        const TouchTexts& texts = play.texts[touch.number - 1];
        const Label* const label = labels[touch.number - 1];
        _touches.push_back(
            {touch.startNs, touch.endNs,
             fmt::format(R"({{"number":{},"startNs":{},"endNs":{},"outcome":"{}","region":"{}","reason":{},"label":{},)"
                         R"("heading":{},"details":{}}})",
                         touch.number, touch.startNs, touch.endNs, nameOf(touch.outcome), nameOf(touch.region),
                         nameOrNull(touch.reason()), label == nullptr ? 0 : label->index, quoted(texts.heading),
                         quoted(texts.details))});
    }
}

void PlayObject::addLabels(const Play& play) {
    const std::vector<const Touch*> touches = pair(play.labels, play.touches);
    for (std::size_t i = 0; i < touches.size(); ++i) {
        const Label& label = play.labels[i];
        const Result result = resultOf(label, touches[i]);
        _labels.push_back(
            {label.startNs, label.endNs,
             fmt::format(R"({{"index":{},"startNs":{},"endNs":{},"gesture":{},"region":{},"endRegion":{},)"
                         R"("result":"{}","isRight":{},"ofTouch":{}}})",
                         label.index, label.startNs, label.endNs, quoted(label.gesture), quoted(label.region),
                         quoted(label.endRegion), nameOf(result), label.isSpoiled() || isRight(result),
                         touches[i] == nullptr ? 0 : touches[i]->number)});
    }
}

// The settings that the recording writes; those whose key is set for the whole play do nothing.
void PlayObject::addWrites(const Play& play) {
    const std::list<Frame>& frames = play.recording.frames();
    for (const Frame& frame : frames) {
        if (frame.type != Frame::Type::State)
            continue;
        const std::uint64_t ns = frame.timestampNs - frames.front().timestampNs;
        const bool isLeftOut = std::ranges::any_of(
            play.settings, [&frame](const Setting& setting) { return Keys::belowPipeline(setting.key) == frame.key; });
        _writes.push_back({ns, ns,
                           fmt::format(R"({{"ns":{},"key":{},"value":{},"isLeftOut":{}}})", ns, quoted(frame.key),
                                       quoted(JSON::text(frame.value.get())), isLeftOut)});
    }
}

// What the host hears of a play, and what interrupted it.
void PlayObject::listen(const Play& play) {
    Replay replay;
    replay.gestureHandler = [this](const Gesture& gesture) {
        const std::uint64_t ns = nsOf(gesture.time);
        _gestures.push_back({ns, ns,
                             fmt::format(R"({{"ns":{},"kind":"{}","region":{}}})", ns, nameOf(gesture.kind),
                                         nameOrNull(gesture.region))});
    };
    replay.disturbanceHandler = [this](const Disturbance& disturbance) {
        const std::uint64_t ns = nsOf(disturbance.time);
        _disturbances.push_back({ns, ns,
                                 fmt::format(R"({{"ns":{},"kind":"{}","text":"{}"}})", ns, nameOf(disturbance.kind),
                                             disturbanceText(disturbance))});
    };
    replay.play(play.recording, play.settings, Replay::kMaxSpeed);
}

void PlayObject::addImages(const Play& play, std::vector<Range> ranges) {
    const Track track(play.recording.frames());
    _durationNs = track.durationNs();
    std::ranges::sort(ranges, {}, &Range::fromNs);
    auto next = ranges.begin(); // the first that has not begun
    Range latest{.fromNs = 1, .toNs = 0};
    track.play(play.settings, [&](const Track::Step& step, const Algs& algs, std::span<const Gesture>) {
        for (; next != ranges.end() && next->fromNs <= step.ns; ++next)
            latest = {.fromNs = next->fromNs, .toNs = std::max(latest.toNs, next->toNs)};
        _images.add(step, algs, latest.holds(step.ns, step.ns));
    });
}

PlayObject::PlayObject(const Play& play, std::vector<Range> ranges)
    : _file(play.file), _settings(settingsArray(play.settings)), _images(play.hasGroups),
      _accel(play.recording.frames()) {
    addTouches(play);
    addLabels(play);
    addWrites(play);
    listen(play);
    addImages(play, std::move(ranges));
}

std::size_t PlayObject::imagesIn(const Range& range) const { return _images.rowsFrom(range.fromNs, range.toNs).count; }

std::string PlayObject::cut(const Range& range) const {
    return fmt::format(R"({{"file":{},"durationNs":{},"settings":{},"images":{{{}}},"touches":{},"gestures":{},)"
                       R"("labels":{},"writes":{},"disturbances":{},"accel":{}}})",
                       quoted(_file), _durationNs, _settings,
                       _images.members(_images.rowsFrom(range.fromNs, range.toNs)), arrayWithin(range, _touches),
                       arrayWithin(range, _gestures), arrayWithin(range, _labels), arrayWithin(range, _writes),
                       arrayWithin(range, _disturbances), _accel.object(range.fromNs, range.toNs));
}

} // namespace VeltoTouch::Page
