#pragma once

#include "Platform/HIDEvent.h"
#include "Platform/Log.h"
#include "Platform/Value.h"
#include "Plugin/Algs/EventStats.h"
#include "Plugin/Algs/HandStats.h"
#include "Plugin/Algs/PixelBank.h"
#include "Plugin/Algs/VirtualImage.h"
#include "Plugin/Reports/InputReport.h"

#include <cstdint>
#include <string>
#include <vector>

namespace VeltoTouch {

// HID events with a reference each.
using HIDEvents = std::vector<Ref<HIDEvent>>;

// The gesture recognizer: turns the stream of pad images into at most one HID event per image.
//
// Algs.cpp has the frame step and the rules that pick the event. Fill files of their own: the events
// (GestureEvents.cpp), the settings (Settings.cpp), the texts (StateDescriptions.cpp).
//
// No lock of its own: all operations are called by the pipeline, whose caller serializes them. Members are read by
// tests and diagnostics and written by nobody else. An exception inside a frame ends the process.
class Algs {
public:
    Algs();

    // Processes one image. Returns the events that it gives, at most one.
    [[nodiscard]] HIDEvents handleImage(const InputReport::Image& image) noexcept;

    // Processes a firmware reset as an image without contacts, frame number 0 and time 0: a touch in progress ends.
    [[nodiscard]] HIDEvents handleReset() noexcept;

    // Processes one frame: `padValues` are its 15 signals, `timeMs` is the device's. Appends an event, if there is one,
    // to `events`, with time stamp 0.
    void processTouchFrame(const std::int16_t* padValues, std::uint32_t frameNumber, std::uint32_t timeMs,
                           HIDEvents& events);

    // Forgets the touch that has ended: the latched pixel statistics, the touch score and the peak.
    void Reset() noexcept;

    // The events of the gestures (GestureEvents.cpp). Each is a finger's digitizer event whose y coordinate carries the
    // region's number. The caller owns the event.
    [[nodiscard]] static Ref<HIDEvent> createMayBeginEvent(PixelRegion region);
    [[nodiscard]] static Ref<HIDEvent> createHoldStartEvent(PixelRegion region);
    [[nodiscard]] static Ref<HIDEvent> createHoldChangeEvent(PixelRegion region);
    [[nodiscard]] static Ref<HIDEvent> createHoldEndEvent(PixelRegion region);
    [[nodiscard]] static Ref<HIDEvent> createTapEvent(PixelRegion region);
    [[nodiscard]] static Ref<HIDEvent> createCancelEvent();

    // Settings and diagnostics by key, without the domain (Settings.cpp). A setting's row (Settings.h) says where it
    // stands, and so its type; "EventStats" and "DebugInfo" are dictionaries and only read. A value that is no number
    // counts as 0, the time-out takes an unsigned 64-bit number's low 32 bits, unknown keys are ignored.
    void setState(const std::string& key, const Ref<Value>& value);
    // Returns nil for an unknown key.
    [[nodiscard]] Ref<Value> getState(const std::string& key) const;

    // Return the state after a frame as a line of text (StateDescriptions.cpp): statistics, the pads (or the groups of
    // pads), gesture state. `padValues` are the frame's 15 signals.
    [[nodiscard]] std::string touchStateDescription(const std::int16_t* padValues, std::uint32_t timeMs) const;
    [[nodiscard]] std::string virtualStateDescription(const std::int16_t* padValues, std::uint32_t timeMs) const;

    os_log_t log; // category "Algs"
    Pixels pixels;
    VirtualImage virtualImage;
    VirtualPixels virtualPixels;
    HandStats handStats;
    EventStats eventStats;
    std::uint16_t lastEventPhase = 0; // of the last event made

private:
    [[nodiscard]] Ref<HIDEvent> eventOfFrame();
    void logFrame(const std::int16_t* padValues, std::uint32_t frameNumber, std::uint32_t timeMs) const;
    [[nodiscard]] std::string stateLine(std::uint32_t timeMs) const;
};

} // namespace VeltoTouch
