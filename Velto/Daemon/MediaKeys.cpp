#include "Velto/Daemon/MediaKeys.h"

#include "Plugin/Reports/Regions.h"
#include "Velto/Host/Gesture.h"

#include <utility>

namespace VeltoTouch {
namespace {

struct RegionKeys {
    std::uint16_t tap;
    std::uint16_t hold;
};

RegionKeys keysOf(PixelRegion region) noexcept {
    switch (region) {
    case PixelRegion::None:
        break;
    case PixelRegion::PlayPause:
        return {.tap = KEY_PLAYPAUSE, .hold = KEY_ASSISTANT};
    case PixelRegion::VolumeUp:
        return {.tap = KEY_VOLUMEUP, .hold = KEY_VOLUMEUP};
    case PixelRegion::VolumeDown:
        return {.tap = KEY_VOLUMEDOWN, .hold = KEY_VOLUMEDOWN};
    }
    return {.tap = KEY_RESERVED, .hold = KEY_RESERVED};
}

RegionKeys keysOf(const HIDEvent& event) noexcept {
    return keysOf(static_cast<PixelRegion>(regionNumberOf(event).value_or(0)));
}

bool isTap(const HIDEvent& event) noexcept {
    const auto mask = static_cast<std::uint32_t>(IOHIDEventGetIntegerValue(&event, kIOHIDEventFieldDigitizerEventMask));
    return (mask & kIOHIDDigitizerEventTap) != 0;
}

} // namespace

void MediaKeys::handle(const HIDEvent& event) {
    if (IOHIDEventGetType(&event) != kIOHIDEventTypeDigitizer) { // the reset is the one other event of the surface
        releaseAll();
        return;
    }
    switch (IOHIDEventGetPhase(&event)) {
    case kIOHIDEventPhaseBegan:
        hold(keysOf(event).hold);
        break;
    case kIOHIDEventPhaseChanged:
        moveHold(keysOf(event).hold);
        break;
    default:
        releaseAll();
        if (isTap(event))
            click(keysOf(event).tap);
        break;
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
