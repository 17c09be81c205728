#pragma once

#include "Platform/Dispatch.h"
#include "Platform/HIDDevice.h"
#include "Platform/Log.h"
#include "Platform/Mutex.h"
#include "Platform/RunLoop.h"
#include "Plugin/Pipeline/Pipeline.h"
#include "Plugin/Recording/PipelineRecording.h"
#include "Plugin/Service/AccelCapture.h"
#include "Plugin/Service/VeltoHIDService.h"

#include <cstdint>
#include <iterator>
#include <memory>
#include <string>

#include <fmt/format.h>

namespace VeltoTouch {

// Where a service delivers its events.
struct DispatchEventInfo {
    Ref<DispatchQueue> queue;
    IOHIDServiceEventCallback callback = nullptr;
    void* target = nullptr; // the host's, handed back to the callback
    void* refcon = nullptr;
    void* sender = nullptr; // the service's interface handle, without a reference
};

// The touch service. Its host loads it through the factory and drives it in this order: probe, start, open, set the
// event callback, schedule; unschedule, close, stop, release. Properties may be read and written from any thread at any
// time.
//
// While it is scheduled it runs an input-report thread with a run loop of its own. Every report of the device goes
// there, under `_pipelineLock`, through the recording into the pipeline; the events go from there to the host's
// callback on the host's queue, without waiting. On the same thread it keeps the newest samples of the accelerometer
// and records those around every digitizer event.
class VeltoTouchHIDService final : public VeltoHIDService {
public:
    VeltoTouchHIDService();
    ~VeltoTouchHIDService() override;

    IOReturn probeWithServicePropertiesOutScore(io_service_t service, CFDictionaryRef properties,
                                                std::int32_t* score) override;
    // Makes the device. Returns kIOReturnNoResources if there is none.
    IOReturn startWithServiceProperties(io_service_t service, CFDictionaryRef properties) override;
    IOReturn stop() override;
    bool openWithOptions(IOOptionBits options) override;
    void closeWithOptions(IOOptionBits options) override;

    // Read and write a property (ServiceProperties.cpp). Any thread; a key of the device may wait for it. Keys:
    //
    //   Pipeline.KEY              read and written below the pipeline; a write is recorded and always taken
    //   Version                   [19, 0, 0]
    //   FirmwareDebugReports      {"0x04": the report's bytes in hexadecimal or why it could not be read, ...}
    //   FactoryResetHoldDuration  an unsigned number, or nil
    //   Recording                 the recording as a container's text
    //   ServicePluginDebug        {KEY: value} of the readable diagnostics
    //   any other, and every other write: the device's
    //
    // For a nil key they return nil and false.
    [[nodiscard]] Ref<Value> getPropertyForKey(CFStringRef key) override;
    bool setPropertyForKey(CFPropertyListRef value, CFStringRef key) override;

    // Counts from the next scheduling on: a thread that runs keeps the callback it began with.
    void setEventCallbackTargetRefcon(IOHIDServiceEventCallback callback, void* target, void* refcon) override;
    // Starts the input-report thread and waits until it has its run loop. Logs an error and changes nothing if the
    // service is scheduled already or `queue` is null.
    void scheduleWithDispatchQueue(dispatch_queue_t queue) override;
    // Stops the thread and waits until it has let go of device and pipeline. Without a thread it only lets go of
    // the queue.
    void unscheduleWithDispatchQueue(dispatch_queue_t queue) override;

    // Return null and kIOReturnUnsupported: the service answers no queries and takes no output.
    [[nodiscard]] Ref<HIDEvent> copyEventWithTypeMatchingOptions(std::uint32_t eventType, IOHIDEventRef matching,
                                                                 IOOptionBits options) override;
    IOReturn setOutputEvent(IOHIDEventRef event) override;

private:
    // The input-report thread (InputReports.cpp): its life, and what it takes in.
    void runInputReportThread(const DispatchEventInfo& info, DispatchSemaphore& signal);
    void handleInputReports(const DispatchEventInfo& info);
    void raiseThreadPriority() const;
    static void inputReportCallback(void* context, IOReturn result, void* sender, IOHIDReportType type,
                                    std::uint32_t reportID, std::uint8_t* report, CFIndex reportLength,
                                    std::uint64_t backendTime);
    // A report's time is the host clock, read once `_pipelineLock` is held; the backend's is only logged.
    void handleInputReport(IOHIDReportType type, std::uint8_t reportID, const std::uint8_t* report, std::size_t length,
                           std::uint64_t backendTime);
    void handleAccelEvent(const HIDEvent& event);

    // The device at this moment, or null. Any thread; the reference keeps it for a request whatever start and stop do
    // meanwhile.
    [[nodiscard]] Ref<HIDDevice> device();
    void setDevice(Ref<HIDDevice> device);

    // The pipeline's callbacks, on the input-report thread (PipelineHandlers.cpp).
    void installHandlers(const DispatchEventInfo& info) VELTO_REQUIRES(_pipelineLock);
    void clearHandlers() VELTO_REQUIRES(_pipelineLock);
    void handleHIDEvents(const DispatchEventInfo& info, const HIDEvents& events) VELTO_REQUIRES(_pipelineLock);
    static void landEvents(os_log_t log, const DispatchEventInfo& info, const HIDEvents& events);

    // Properties (ServiceProperties.cpp).
    [[nodiscard]] Ref<Value> pipelineState(const std::string& key);
    [[nodiscard]] Ref<Value> firmwareDebugReports();
    [[nodiscard]] Ref<Value> factoryResetHoldDuration();
    [[nodiscard]] Ref<Value> recordingText();
    [[nodiscard]] Ref<Value> servicePluginDebug();

    // Builds and logs a message if its level is enabled.
    template <class... Arguments>
    void log(os_log_type_t type, fmt::format_string<Arguments...> format, Arguments&&... arguments) const {
        logTo(_log, type, format, std::forward<Arguments>(arguments)...);
    }
    template <class... Arguments>
    static void logTo(os_log_t log, os_log_type_t type, fmt::format_string<Arguments...> format,
                      Arguments&&... arguments) {
        if (!os_log_type_enabled(log, type))
            return;
        fmt::memory_buffer message; // in place up to 500 bytes
        fmt::format_to(std::back_inserter(message), format, std::forward<Arguments>(arguments)...);
        os_log_with_type(log, type, {message.data(), message.size()});
    }

    const os_log_t _log;
    Mutex _deviceLock; // held while the reference is copied or replaced, never during a request
    Ref<HIDDevice> _veltoDevice VELTO_GUARDED_BY(_deviceLock);
    Ref<CFRunLoop> _inputReportRunLoop;              // while the thread runs
    Ref<DispatchSemaphore> _inputReportThreadSignal; // signalled twice a thread: it has its loop, it has finished
    DispatchEventInfo _dispatchEventInfo;

    Mutex _pipelineLock;
    std::shared_ptr<Pipeline> _pipeline VELTO_GUARDED_BY(_pipelineLock);
    PipelineRecording _recording VELTO_GUARDED_BY(_pipelineLock); // in front of the same pipeline
    AccelCapture _accel VELTO_GUARDED_BY(_pipelineLock);
};

} // namespace VeltoTouch
