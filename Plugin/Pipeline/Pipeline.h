#pragma once

#include "Plugin/Algs/Algs.h"
#include "Plugin/Pipeline/PipelineInterfaces.h"
#include "Plugin/Reports/InputReport.h"

#include <functional>

namespace VeltoTouch {

// Turns the device's raw input reports into HID events, one report at a time, on the caller's thread.
// Everything it produces leaves through the callbacks below, which its owner assigns and clears between calls.
// For one image they run in this order:
//
//   inputReportObserver, imageHandler, disjointImageHandler (on a gap), hidEventsHandler (if there are events)
//
// and for a firmware reset: inputReportObserver, firmwareEventHandler, hidEventsHandler.
//
// No lock of its own: one thread at a time, the service's `_pipelineLock` sees to that. Callbacks run under that
// lock: they must not wait, take it again or throw (an exception ends the process).
class Pipeline final : public PipelineInput, public PipelineOutput {
public:
    // The vendor-defined event that a firmware reset emits.
    static constexpr std::uint32_t kResetUsagePage = 0xFF60;
    static constexpr std::uint32_t kResetUsage = 2;

    using StateCallback = std::function<void(std::uint64_t timestamp, const std::string& key, const Ref<Value>& value)>;
    using ReportCallback = std::function<void(std::uint64_t timestamp, const std::uint8_t* report, std::size_t length)>;

    // Keys of the domain "Algs" go to the recognizer; every other key is ignored.
    void setState(std::uint64_t timestamp, const std::string& key, const Ref<Value>& value) noexcept override;
    void handleInputReport(std::uint64_t timestamp, const std::uint8_t* report, std::size_t length) noexcept override;
    void handleMetadata(std::uint64_t timestamp, const std::string& key, const Ref<Value>& value) noexcept override;
    // "DebugInfo": {"ResetCount", "DisjointImageCount"}, unsigned; keys of the domain "Algs" as the recognizer
    // answers them; nil for any other.
    [[nodiscard]] Ref<Value> getState(const std::string& key) noexcept override;

    // Stamps the events with `timestamp` and hands the batch on if there is anything in it.
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

    // Frame tracking and counters, for diagnostics. Nothing resets them, a firmware reset neither.
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
