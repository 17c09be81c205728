#include "Platform/Clock.h"
#include "Plugin/Accel/AccelSystem.h"
#include "Plugin/Service/InputReportMode.h"
#include "Plugin/Service/VeltoTouchHIDService.h"

#include <array>
#include <exception>
#include <limits>
#include <optional>
#include <system_error>

#include <pthread.h>
#include <sched.h>

namespace VeltoTouch {
namespace {

constexpr int kThreadPriority = 63;
constexpr std::size_t kReportBufferLength = 512;
constexpr std::uint32_t kAccelEventsPerSecond = 100;

float axisOf(const HIDEvent& event, IOHIDEventField field) noexcept {
    return static_cast<float>(IOHIDEventGetFloatValue(&event, field));
}

} // namespace

void VeltoTouchHIDService::runInputReportThread(const DispatchEventInfo& info, DispatchSemaphore& signal) {
    log(OS_LOG_TYPE_DEBUG, "input report thread start");
    try {
        _inputReportRunLoop = Ref<CFRunLoop>::retained(CFRunLoopGetCurrent());
    } catch (const std::system_error& error) {
        log(OS_LOG_TYPE_ERROR, "no run loop: {}", error.what());
        signal.signal();
        return;
    }
    signal.signal(); // scheduling returns
    handleInputReports(info);
    signal.signal(); // unscheduling returns
    log(OS_LOG_TYPE_DEBUG, "input report thread end");
}

void VeltoTouchHIDService::handleInputReports(const DispatchEventInfo& info) {
    raiseThreadPriority();
    std::optional<AccelSystem> accelSystem;
    try {
        accelSystem.emplace(CFRunLoopGetCurrent(), inputReportMode(), kAccelEventsPerSecond,
                            [this](HIDEvent* event) { handleAccelEvent(*event); });
    } catch (const std::exception& error) {
        log(OS_LOG_TYPE_ERROR, "Failed to create accel system: {}", error.what());
    }
    {
        const MutexLock guard(_pipelineLock);
        installHandlers(info);
    }

    std::array<std::uint8_t, kReportBufferLength> report{};
    const Ref<HIDDevice> device = this->device();
    IOHIDDeviceRegisterInputReportWithTimeStampCallback(device.get(), report.data(), report.size(), inputReportCallback,
                                                        this);
    IOHIDDeviceScheduleWithRunLoop(device.get(), CFRunLoopGetCurrent(), inputReportMode());
    while (CFRunLoopRunInMode(inputReportMode(), std::numeric_limits<double>::infinity(), true) ==
           kCFRunLoopRunHandledSource) {
    }
    IOHIDDeviceUnscheduleFromRunLoop(device.get(), CFRunLoopGetCurrent(), inputReportMode());
    IOHIDDeviceRegisterInputReportWithTimeStampCallback(device.get(), report.data(), report.size(), nullptr, nullptr);

    const MutexLock guard(_pipelineLock);
    clearHandlers();
}

void VeltoTouchHIDService::raiseThreadPriority() const {
    const sched_param parameters{.sched_priority = kThreadPriority};
    if (const int error = pthread_setschedparam(pthread_self(), SCHED_RR, &parameters); error != 0)
        log(OS_LOG_TYPE_ERROR, "pthread_setschedparam failed: {}", error);
}

void VeltoTouchHIDService::inputReportCallback(void* context, IOReturn /*result*/, void* /*sender*/,
                                               IOHIDReportType type, std::uint32_t reportID, std::uint8_t* report,
                                               CFIndex reportLength, std::uint64_t backendTime) {
    static_cast<VeltoTouchHIDService*>(context)->handleInputReport(type, static_cast<std::uint8_t>(reportID), report,
                                                                   static_cast<std::size_t>(reportLength), backendTime);
}

void VeltoTouchHIDService::handleInputReport(IOHIDReportType type, std::uint8_t reportID, const std::uint8_t* report,
                                             std::size_t length, std::uint64_t backendTime) {
    log(OS_LOG_TYPE_DEBUG, "Received input report (type {}, reportID {}, reportLength {}, timestampMach {})",
        static_cast<std::uint32_t>(type), reportID, length, backendTime);
    const MutexLock guard(_pipelineLock);
    _recording.handleInputReport(mach_absolute_time(), report, length);
}

void VeltoTouchHIDService::handleAccelEvent(const HIDEvent& event) {
    const AccelSample sample{.timestamp = mach_absolute_time(),
                             .x = axisOf(event, kIOHIDEventFieldAccelerometerX),
                             .y = axisOf(event, kIOHIDEventFieldAccelerometerY),
                             .z = axisOf(event, kIOHIDEventFieldAccelerometerZ)};
    const MutexLock guard(_pipelineLock);
    _accel.add(sample, _recording);
}

} // namespace VeltoTouch
