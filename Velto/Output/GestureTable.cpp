#include "Velto/Output/GestureTable.h"

#include <utility>

namespace VeltoTouch::Velto {
void GestureTable::add(const Gesture& gesture) {
    switch (gesture.kind) {
    case GestureKind::MayBegin:
        return begin(gesture);
    case GestureKind::HoldStart:
        if (_touch) {
            _touch->name = "hold";
            _touch->region = regionNameOf(gesture);
            _touch->end = gesture.time;
        }
        return;
    case GestureKind::HoldChange:
        if (_touch) {
            _touch->region.append(" > ").append(regionNameOf(gesture));
            _touch->end = gesture.time;
        }
        return;
    case GestureKind::HoldEnd:
        return end("hold", gesture.time);
    case GestureKind::Tap:
        if (_touch)
            _touch->region = regionNameOf(gesture);
        return end("tap", gesture.time);
    case GestureKind::Cancel:
        return end("rejected", gesture.time);
    case GestureKind::FirmwareReset:
        begin(gesture);
        return end("firmware reset", gesture.time);
    }
}

void GestureTable::begin(const Gesture& gesture) {
    _touch = {.name = "",
              .region = std::string(regionNameOf(gesture)),
              .frame = gesture.frame,
              .start = gesture.time,
              .end = gesture.time};
}

void GestureTable::finish(HostTime time) {
    if (_touch && _touch->name == "hold")
        end("hold, not ended", time);
}

void GestureTable::end(std::string name, HostTime time) {
    if (!_touch)
        return;
    _touch->name = std::move(name);
    _touch->end = time;
    ++_counts[_touch->name][_touch->region];
    _show(*_touch);
    _touch.reset();
}

} // namespace VeltoTouch::Velto
