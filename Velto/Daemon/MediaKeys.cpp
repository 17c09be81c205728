#include "Velto/Daemon/MediaKeys.h"

#include <utility>

namespace VeltoTouch {
namespace {

struct RegionKeys {
    std::uint16_t tap;
    std::uint16_t hold;
};

RegionKeys keysOf(const Gesture& gesture) noexcept {
    switch (gesture.region.value_or(PixelRegion::None)) {
    case PixelRegion::PlayPause:
        return {.tap = KEY_PLAYPAUSE, .hold = KEY_ASSISTANT};
    case PixelRegion::VolumeDown:
        return {.tap = KEY_VOLUMEDOWN, .hold = KEY_VOLUMEDOWN};
    case PixelRegion::VolumeUp:
        return {.tap = KEY_VOLUMEUP, .hold = KEY_VOLUMEUP};
    case PixelRegion::None:
        break;
    }
    return {.tap = KEY_RESERVED, .hold = KEY_RESERVED};
}

} // namespace

void MediaKeys::handle(const Gesture& gesture) {
    switch (gesture.kind) {
    case GestureKind::HoldStart:
        return hold(keysOf(gesture).hold);
    case GestureKind::HoldChange:
        return moveHold(keysOf(gesture).hold);
    case GestureKind::Tap:
        releaseAll();
        return click(keysOf(gesture).tap);
    case GestureKind::MayBegin:
    case GestureKind::HoldEnd:
    case GestureKind::Cancel:
    case GestureKind::FirmwareReset:
        return releaseAll();
    }
}

void MediaKeys::click(std::uint16_t key) {
    hold(key);
    releaseAll();
}

void MediaKeys::moveHold(std::uint16_t key) {
    if (_pressed != KEY_ASSISTANT)
        hold(key == KEY_ASSISTANT ? kNoKey : key);
}

void MediaKeys::hold(std::uint16_t key) {
    if (_pressed == key)
        return;
    if (const std::uint16_t released = std::exchange(_pressed, kNoKey); released != kNoKey)
        _output.setKey(released, false);
    if (key == kNoKey)
        return;
    _output.setKey(key, true);
    _pressed = key;
}

} // namespace VeltoTouch
