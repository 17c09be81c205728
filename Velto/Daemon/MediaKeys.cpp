#include "Velto/Daemon/MediaKeys.h"

#include <utility>

namespace VeltoTouch {

std::uint16_t MediaKeys::handle(const Gesture& gesture) {
    const PixelRegion region = gesture.region.value_or(PixelRegion::None);
    switch (gesture.kind) {
    case GestureKind::HoldStart:
        return startHold(region);
    case GestureKind::HoldChange:
        return moveHold(region);
    case GestureKind::Tap:
        releaseAll();
        return click(keysOf(_table, region).tap);
    case GestureKind::MayBegin:
    case GestureKind::HoldEnd:
    case GestureKind::Cancel:
    case GestureKind::FirmwareReset:
        break;
    }
    releaseAll();
    return kNoKey;
}

void MediaKeys::setTable(const KeyTable& table) {
    _table = table;
    _isAnnounced = false;
    announce();
}

void MediaKeys::releaseAll() {
    _staysPut = false;
    hold(kNoKey);
}

std::uint16_t MediaKeys::click(std::uint16_t key) {
    hold(key);
    releaseAll();
    return key;
}

std::uint16_t MediaKeys::startHold(PixelRegion region) {
    _staysPut = false;
    const std::uint16_t key = hold(keysOf(_table, region).hold);
    _staysPut = region == PixelRegion::PlayPause;
    return key;
}

std::uint16_t MediaKeys::moveHold(PixelRegion region) {
    if (_staysPut)
        return _pressed;
    return hold(region == PixelRegion::PlayPause ? kNoKey : keysOf(_table, region).hold);
}

// Keeps one key pressed, or none.
std::uint16_t MediaKeys::hold(std::uint16_t key) {
    if (_pressed == key)
        return key;
    if (const std::uint16_t released = std::exchange(_pressed, kNoKey); released != kNoKey)
        _output.setKey(released, false);
    announce();
    if (key != kNoKey)
        _output.setKey(key, true);
    return _pressed = key;
}

void MediaKeys::announce() {
    if (_isAnnounced || _pressed != kNoKey)
        return;
    _output.announce(keysIn(_table));
    _isAnnounced = true;
}

} // namespace VeltoTouch
