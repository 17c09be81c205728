#include "Velto/Daemon/MediaKeys.h"

#include "Velto/Host/Gesture.h"

#include <utility>

namespace VeltoTouch {
namespace {

struct RegionKeys {
    std::uint16_t tap;
    std::uint16_t hold;
};

// In the order of the numbers under which regions stand in a digitizer event's y.
constexpr std::array<RegionKeys, 4> kRegions{{
    {.tap = KEY_RESERVED, .hold = KEY_RESERVED},     // none
    {.tap = KEY_PLAYPAUSE, .hold = KEY_ASSISTANT},   // play-pause
    {.tap = KEY_VOLUMEDOWN, .hold = KEY_VOLUMEDOWN}, // volume down
    {.tap = KEY_VOLUMEUP, .hold = KEY_VOLUMEUP},     // volume up
}};

RegionKeys keysOf(const HIDEvent& event) noexcept { return kRegions[regionNumberOf(event).value_or(0)]; }

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
