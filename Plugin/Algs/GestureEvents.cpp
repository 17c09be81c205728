#include "Plugin/Algs/Algs.h"

namespace VeltoTouch {
namespace {

Ref<HIDEvent> createFingerEvent(std::uint32_t eventMask, double y, std::uint16_t phase) {
    auto event = IOHIDEventCreateDigitizerEvent(nullptr, 0, kIOHIDDigitizerTransducerTypeFinger, 0, 0, eventMask, 0,
                                                0.0, y, 0.0, 0.0, 0.0, false, false, 0);
    IOHIDEventSetPhase(event.get(), phase);
    return event;
}

double coordinate(PixelRegion region) noexcept { return static_cast<double>(region); }

} // namespace

Ref<HIDEvent> Algs::createMayBeginEvent(PixelRegion region) {
    return createFingerEvent(0, coordinate(region), kIOHIDEventPhaseMayBegin);
}

Ref<HIDEvent> Algs::createHoldStartEvent(PixelRegion region) {
    return createFingerEvent(kIOHIDDigitizerEventTouch, coordinate(region), kIOHIDEventPhaseBegan);
}

Ref<HIDEvent> Algs::createHoldChangeEvent(PixelRegion region) {
    return createFingerEvent(kIOHIDDigitizerEventTouch, coordinate(region), kIOHIDEventPhaseChanged);
}

Ref<HIDEvent> Algs::createHoldEndEvent(PixelRegion region) {
    return createFingerEvent(kIOHIDDigitizerEventTouch, coordinate(region), kIOHIDEventPhaseEnded);
}

Ref<HIDEvent> Algs::createTapEvent(PixelRegion region) {
    return createFingerEvent(kIOHIDDigitizerEventTap, coordinate(region), kIOHIDEventPhaseUndefined);
}

Ref<HIDEvent> Algs::createCancelEvent() { return createFingerEvent(0, 0.0, kIOHIDEventPhaseCancelled); }

} // namespace VeltoTouch
