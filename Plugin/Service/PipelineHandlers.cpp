#include "Platform/Trace.h"
#include "Plugin/Service/VeltoTouchHIDService.h"

namespace VeltoTouch {
namespace {

// Trace points.
constexpr std::uint32_t kTraceInputReport = 0x2B150180;   // the report's first four bytes
constexpr std::uint32_t kTraceBatchLands = 0x2B150184;    // count of events
constexpr std::uint32_t kTraceEvent = 0x2B150188;         // type, phase
constexpr std::uint32_t kTraceFirmwareEvent = 0x2B15018C; // event code, context

} // namespace

// All of them are called under the lock: they log, trace and queue, and wait for nothing.
void VeltoTouchHIDService::installHandlers(const DispatchEventInfo& info) {
    _pipeline->inputReportObserver = [this](std::uint64_t, const std::uint8_t* report, std::size_t length) {
        const auto byte = [report, length](std::size_t index) -> std::uint64_t {
            return index < length ? report[index] : 0;
        };
        kdebug_trace(kTraceInputReport, byte(0), byte(1), byte(2), byte(3));
        log(OS_LOG_TYPE_DEBUG, "Input report probe");
    };
    _pipeline->invalidReportHandler = [this](std::uint64_t, const std::uint8_t* report, std::size_t length) {
        if (length == 0)
            log(OS_LOG_TYPE_DEBUG, "Invalid input report len==0");
        else
            log(OS_LOG_TYPE_DEBUG, "Invalid input report with ID {}", report[0]);
    };
    _pipeline->firmwareEventHandler = [this](std::uint64_t, const InputReport::FirmwareEvent& event) {
        kdebug_trace(kTraceFirmwareEvent, event.event, event.contextNumber(), 0, 0);
        log(OS_LOG_TYPE_DEFAULT, "Firmware event probe; event: {:x}, context: {:x}", event.event,
            event.contextNumber());
    };
    _pipeline->imageHandler = [this](std::uint64_t, const InputReport::Image& image) {
        log(OS_LOG_TYPE_DEBUG, "Received image frame: {}", image.frameNumber);
    };
    _pipeline->disjointImageHandler = [this](std::uint64_t, std::uint32_t previousFrame,
                                             const InputReport::Image& image) {
        log(OS_LOG_TYPE_ERROR, "Disjoint image (frame number: {} -> {})\n\n", previousFrame, image.frameNumber);
    };
    _pipeline->hidEventsHandler = [this, info](std::uint64_t, const HIDEvents& events) {
        _pipelineLock.assertHeld();
        handleHIDEvents(info, events);
    };
}

void VeltoTouchHIDService::clearHandlers() {
    _pipeline->inputReportObserver = nullptr;
    _pipeline->invalidReportHandler = nullptr;
    _pipeline->firmwareEventHandler = nullptr;
    _pipeline->imageHandler = nullptr;
    _pipeline->disjointImageHandler = nullptr;
    _pipeline->hidEventsHandler = nullptr;
}

void VeltoTouchHIDService::handleHIDEvents(const DispatchEventInfo& info, const HIDEvents& events) {
    log(OS_LOG_TYPE_DEBUG, "HID events probe: {} event(s)", events.size());
    if (!events.empty()) {
        log(OS_LOG_TYPE_DEBUG, "Dispatch {} event(s) takeoff", events.size());
        dispatch_async(info.queue.get(), [log = _log, info, events] { landEvents(log, info, events); });
    }
    for (const Ref<HIDEvent>& event : events) {
        if (IOHIDEventGetType(event.get()) == kIOHIDEventTypeDigitizer)
            _accel.captureAround();
    }
}

// On the host's queue. The service may have been released by then.
void VeltoTouchHIDService::landEvents(os_log_t log, const DispatchEventInfo& info, const HIDEvents& events) {
    kdebug_trace(kTraceBatchLands, events.size(), 0, 0, 0);
    logTo(log, OS_LOG_TYPE_DEBUG, "Dispatch {} event(s) land", events.size());
    for (const Ref<HIDEvent>& event : events) {
        kdebug_trace(kTraceEvent, IOHIDEventGetType(event.get()), IOHIDEventGetPhase(event.get()), 0, 0);
        if (os_log_type_enabled(log, OS_LOG_TYPE_DEFAULT))
            logTo(log, OS_LOG_TYPE_DEFAULT, "Dispatch event: {}", IOHIDEventCopyDescription(event.get()));
        if (info.callback != nullptr)
            info.callback(info.target, info.refcon, info.sender, event.get(), 0);
    }
}

} // namespace VeltoTouch
