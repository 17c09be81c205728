#pragma once

#include "Plugin/Algs/Algs.h"
#include "Plugin/Pipeline/PipelineInterfaces.h"
#include "Plugin/Reports/InputReport.h"

#include <functional>

namespace VeltoTouch {

// Turns the device's raw input reports into HID events, one report at a time, on the caller's thread.
// Everything it produces leaves through the callbacks below, which its owner assigns and clears between calls.
// For an image they are called in this order:
//
//   inputReportObserver, imageHandler, disjointImageHandler (on a gap), hidEventsHandler (if there are events)
//
// and for a firmware reset: inputReportObserver, firmwareEventHandler, hidEventsHandler.
//
// No lock of its own: the service calls it under its `_pipelineLock`, one thread at a time. Callbacks are called under
// that lock: they must not wait, take it again or throw (an exception ends the process).
class Pipeline final : public PipelineInput, public PipelineOutput {
public:
    using StateCallback = std::function<void(std::uint64_t timestamp, const std::string& key, const Ref<Value>& value)>;
    using ReportCallback = std::function<void(std::uint64_t timestamp, const std::uint8_t* report, std::size_t length)>;

    // Writes a setting: keys of the domain "Algs" are the recognizer's; every other key is ignored.
    void setState(std::uint64_t timestamp, const std::string& key, const Ref<Value>& value) noexcept override;
    // Processes a report whole, events included, before it returns.
    void handleInputReport(std::uint64_t timestamp, const std::uint8_t* report, std::size_t length) noexcept override;
    // Calls `metadataHandler`, nothing else.
    void handleMetadata(std::uint64_t timestamp, const std::string& key, const Ref<Value>& value) noexcept override;
    // Returns for "DebugInfo" {"ResetCount", "DisjointImageCount"}, unsigned numbers; for keys of the domain "Algs"
    // what the recognizer returns; nil for any other.
    [[nodiscard]] Ref<Value> getState(const std::string& key) noexcept override;

    // Stamps the events with `timestamp` (host ticks) and calls `hidEventsHandler` unless there are none.
    void handleHIDEvents(std::uint64_t timestamp, const HIDEvents& events);

    StateCallback setStateObserver;      // every setState, before it acts
    ReportCallback inputReportObserver;  // every report, before it is parsed
    StateCallback metadataHandler;       // every handleMetadata
    ReportCallback invalidReportHandler; // reports that are neither firmware event nor image
    std::function<void(std::uint64_t timestamp, const InputReport::FirmwareEvent& event)> firmwareEventHandler;
    std::function<void(std::uint64_t timestamp, const InputReport::Image& image)>
        imageHandler; // before the frame check
    // An image whose frame number does not follow the previous one's.
    std::function<void(std::uint64_t timestamp, std::uint32_t previousFrame, const InputReport::Image& image)>
        disjointImageHandler;
    std::function<void(std::uint64_t timestamp, const HIDEvents& events)> hidEventsHandler; // non-empty, stamped
    std::function<void(const std::string& key)> getStateObserver; // every getState, before it is answered

    // Frame tracking and counters, for diagnostics. Nothing resets them, not even a firmware reset.
    std::uint32_t lastFrameNumber = 0;
    bool hasLastFrame = false;
    std::uint32_t resetCount = 0;
    std::uint32_t disjointImageCount = 0;

    Algs algs;

private:
    void handleFirmwareEvent(std::uint64_t timestamp, const InputReport::FirmwareEvent& event);
    void handleImage(std::uint64_t timestamp, const InputReport::Image& image);
};

} // namespace VeltoTouch
