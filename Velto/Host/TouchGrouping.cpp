#include "Velto/Host/TouchGrouping.h"

#include <utility>

namespace VeltoTouch {

std::optional<TouchGrouping::Touch> TouchGrouping::add(const Gesture& gesture) {
    using enum GestureKind;
    if (!_touch && (gesture.kind == HoldEnd || gesture.kind == Cancel))
        return std::nullopt;
    if (!_touch || gesture.kind == MayBegin || gesture.kind == FirmwareReset)
        _touch = {.last = {}, .regions = {}, .frame = gesture.frame, .start = gesture.time, .end = {}};
    _touch->last = gesture.kind;
    _touch->end = gesture.time;
    switch (gesture.kind) {
    case MayBegin:
    case HoldStart:
        _touch->regions = {regionNameOf(gesture)};
        return std::nullopt;
    case HoldChange:
        _touch->regions.push_back(regionNameOf(gesture));
        return std::nullopt;
    case Tap:
        _touch->regions = {regionNameOf(gesture)};
        break;
    case HoldEnd:
    case Cancel:
    case FirmwareReset:
        break;
    }
    return std::exchange(_touch, std::nullopt);
}

std::string_view nameOfEnd(GestureKind last) noexcept {
    switch (last) {
    case GestureKind::Tap:
        return "tap";
    case GestureKind::Cancel:
        return "rejected";
    case GestureKind::FirmwareReset:
        return "firmware reset";
    default:
        return "hold";
    }
}

} // namespace VeltoTouch
