#include "Velto/Bench/TroubleWindow.h"

#include "Plugin/Pipeline/Properties.h"
#include "Plugin/Shared/Keys.h"

#include <algorithm>
#include <list>
#include <tuple>
#include <utility>
#include <vector>

namespace VeltoTouch::Bench {
namespace {

bool areDecidedAlike(const Analysis::Touch& a, const Analysis::Touch& b) {
    const auto areSameChecks = [](const Analysis::Check& one, const Analysis::Check& other) {
        return std::tie(one.rule, one.value, one.bound, one.passed) ==
               std::tie(other.rule, other.value, other.bound, other.passed);
    };
    const auto areSameChanges = [](const Analysis::RegionChange& one, const Analysis::RegionChange& other) {
        return std::tie(one.region, one.by) == std::tie(other.region, other.by);
    };
    return std::tie(a.outcome, a.region, a.peak.pixel, a.peak.value, a.isCutByReset) ==
               std::tie(b.outcome, b.region, b.peak.pixel, b.peak.value, b.isCutByReset) &&
           std::ranges::equal(a.checks, b.checks, areSameChecks) && std::ranges::equal(a.path, b.path, areSameChanges);
}

} // namespace

void SettingsInForce::add(const Frame& frame) {
    if (frame.type != Frame::Type::State)
        return;
    const auto setting = settingUnder(Keys::pipelineKey(frame.key));
    if (!setting || !setting->row.is<SettingRow::Action>())
        _frames[frame.key] = frame;
}

void SettingsInForce::writeAt(std::uint64_t timestampNs, const std::function<void(const Frame& frame)>& handle) const {
    for (const auto& [key, frame] : _frames) {
        Frame written = frame;
        written.timestampNs = timestampNs;
        handle(written);
    }
}

void TroubleWindow::add(Frame frame) {
    _nowNs = std::max(_nowNs, frame.timestampNs);
    _waiting.push_back(
        {.ns = _nowNs, .isTouched = _watch.isTouched(), .isClear = _watch.isClear(), .frame = std::move(frame)});
    if (isKept())
        return keepWaiting();
    const auto waitsFor = [this] { return _nowNs - _waiting.front().ns; };
    const auto isTooOld = [&] { return waitsFor() > _beforeNs + kHistory || _waiting.size() > kMostFrames; };
    if (isTooOld() || (waitsFor() > _beforeNs && !_watch.isTouched())) // the next stretch does not reach back
        finish();
    while (isTooOld())
        forgetFirst();
}

void TroubleWindow::mark() {
    if (!_keptUntilNs) {
        for (std::size_t before = start(); before > 0; --before)
            forgetFirst();
        _handlers.begin();
        _settings.writeAt(_waiting.front().frame.timestampNs, _handlers.frame);
    }
    _keptUntilNs = _nowNs + _afterNs;
    keepWaiting();
}

void TroubleWindow::finish() {
    if (std::exchange(_keptUntilNs, std::nullopt))
        _handlers.end();
}

// Whether the newest frame goes on a stretch whose last frame was the one before it.
bool TroubleWindow::isKept() const {
    if (!_keptUntilNs || _waiting.size() > 1)
        return false;
    return _nowNs <= *_keptUntilNs || (_watch.isTouched() && _nowNs - *_keptUntilNs <= kHistory);
}

void TroubleWindow::keepWaiting() {
    for (const Waiting& waiting : _waiting) {
        _settings.add(waiting.frame);
        _handlers.frame(waiting.frame);
    }
    _waiting.clear();
}

void TroubleWindow::forgetFirst() {
    _settings.add(_waiting.front().frame);
    _waiting.pop_front();
}

// The first frame of a stretch around the newest frame: the surface is clear with it. A touch may take the frames back
// to one of the touches before it; if it is decided in another way from there too, they are of no use.
std::size_t TroubleWindow::start() const {
    constexpr int kMostTries = 8;
    const Analysis::Touch* const touch = _watch.endedTouch();
    const std::uint64_t momentNs = touch != nullptr ? touch->startNs : _nowNs;
    const std::uint64_t wantedNs = momentNs - std::min(momentNs, _beforeNs);
    const auto behind = std::ranges::upper_bound(_waiting, wantedNs, {}, &Waiting::ns) - _waiting.begin();
    const std::size_t wanted = clearUpTo(static_cast<std::size_t>(std::max(behind, std::ptrdiff_t{1}) - 1));
    std::size_t tried = wanted;
    for (int tries = 1; touch != nullptr && !isDecidedAlike(*touch, tried); ++tries) {
        if (tried == 0 || tries == kMostTries)
            return wanted;
        while (tried > 0 && !_waiting[tried].isTouched)
            --tried;
        tried = clearUpTo(tried);
    }
    return tried;
}

// The newest frame up to this one with which the surface is clear; the first that waits if there is none.
std::size_t TroubleWindow::clearUpTo(std::size_t last) const {
    while (last > 0 && !_waiting[last].isClear)
        --last;
    return last;
}

// Whether a play that begins with this frame ends with a touch that is decided by the same numbers as `touch`.
bool TroubleWindow::isDecidedAlike(const Analysis::Touch& touch, std::size_t start) const {
    SettingsInForce settings = _settings;
    std::list<Frame> frames;
    for (std::size_t i = 0; i < start; ++i)
        settings.add(_waiting[i].frame);
    settings.writeAt(_waiting[start].frame.timestampNs, [&frames](const Frame& frame) { frames.push_back(frame); });
    for (std::size_t i = start; i < _waiting.size(); ++i)
        frames.push_back(_waiting[i].frame);
    const std::vector<Analysis::Touch> touches = Analysis::touchesOf(Analysis::Track(frames), {});
    return !touches.empty() && areDecidedAlike(touches.back(), touch);
}

} // namespace VeltoTouch::Bench
