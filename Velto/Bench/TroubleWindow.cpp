#include "Velto/Bench/TroubleWindow.h"

#include "Plugin/Pipeline/Properties.h"
#include "Plugin/Shared/Keys.h"

#include <algorithm>
#include <utility>

namespace VeltoTouch::Bench {

void SettingsInForce::add(const Frame& frame) {
    if (frame.type != Frame::Type::State)
        return;
    const auto setting = settingUnder(std::string(Keys::kPipelineDomain) + "." + frame.key);
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
    _waiting.push_back({.ns = _nowNs, .frame = std::move(frame)});
    if (_keptUntilNs && _nowNs <= *_keptUntilNs)
        keepWaiting();
    else
        forgetOld();
}

void TroubleWindow::mark() {
    if (!_keptUntilNs) {
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

void TroubleWindow::keepWaiting() {
    for (const Waiting& waiting : _waiting) {
        _settings.add(waiting.frame);
        _handlers.frame(waiting.frame);
    }
    _waiting.clear();
}

// The first frame that is forgotten is the gap that ends a stretch.
void TroubleWindow::forgetOld() {
    while (!_waiting.empty() && _nowNs - _waiting.front().ns > _beforeNs) {
        finish();
        _settings.add(_waiting.front().frame);
        _waiting.pop_front();
    }
}

} // namespace VeltoTouch::Bench
