#include "Plugin/Service/VeltoTouchHIDService.h"

#include "Platform/Thread.h"
#include "Plugin/Service/InputReportMode.h"
#include "Plugin/Service/VeltoIUnknown.h"

#include <system_error>

namespace VeltoTouch {

VeltoTouchHIDService::VeltoTouchHIDService()
    : _log(os_log_create("org.velto.touch", "HIDService")), _pipeline(std::make_shared<Pipeline>()) {
    _recording.pipeline = _pipeline;
    _recording.setMaxFrameCount(kMaxRecordedFrames);
}

VeltoTouchHIDService::~VeltoTouchHIDService() { log(OS_LOG_TYPE_DEBUG, "dealloc"); }

IOReturn VeltoTouchHIDService::probeWithServicePropertiesOutScore(io_service_t /*service*/,
                                                                  CFDictionaryRef /*properties*/,
                                                                  std::int32_t* /*score*/) {
    log(OS_LOG_TYPE_DEBUG, "probeWithService:properties:outScore:");
    return kIOReturnSuccess;
}

IOReturn VeltoTouchHIDService::startWithServiceProperties(io_service_t service, CFDictionaryRef /*properties*/) {
    log(OS_LOG_TYPE_DEBUG, "startWithService:properties:");
    const auto created = IOHIDDeviceCreate(nullptr, service);
    setDevice(created);
    return created ? kIOReturnSuccess : kIOReturnNoResources;
}

IOReturn VeltoTouchHIDService::stop() {
    log(OS_LOG_TYPE_DEBUG, "stop");
    setDevice(nullptr);
    return kIOReturnSuccess;
}

bool VeltoTouchHIDService::openWithOptions(IOOptionBits options) {
    log(OS_LOG_TYPE_DEBUG, "openWithOptions:{:x}", options);
    return IOHIDDeviceOpen(device().get(), options) == kIOReturnSuccess;
}

void VeltoTouchHIDService::closeWithOptions(IOOptionBits options) {
    log(OS_LOG_TYPE_DEBUG, "closeWithOptions:{:x}", options);
    IOHIDDeviceClose(device().get(), options);
}

Ref<HIDDevice> VeltoTouchHIDService::device() {
    const MutexLock guard(_deviceLock);
    return _veltoDevice;
}

void VeltoTouchHIDService::setDevice(Ref<HIDDevice> device) {
    const MutexLock guard(_deviceLock);
    std::swap(_veltoDevice, device); // the old one goes without the lock
}

void VeltoTouchHIDService::setEventCallbackTargetRefcon(IOHIDServiceEventCallback callback, void* target,
                                                        void* refcon) {
    log(OS_LOG_TYPE_DEBUG, "setEventCallback:target:refcon:");
    _dispatchEventInfo.callback = callback;
    _dispatchEventInfo.target = target;
    _dispatchEventInfo.refcon = refcon;
}

// The thread keeps what it needs itself: the host clears its members while the thread still signals.
void VeltoTouchHIDService::scheduleWithDispatchQueue(dispatch_queue_t queue) {
    log(OS_LOG_TYPE_DEBUG, "scheduleWithDispatchQueue:");
    if (_inputReportRunLoop) {
        log(OS_LOG_TYPE_ERROR, "scheduleWithDispatchQueue: without unscheduleWithDispatchQueue: before it");
        return;
    }
    if (queue == nullptr) {
        log(OS_LOG_TYPE_ERROR, "scheduleWithDispatchQueue: without a queue");
        return;
    }
    _dispatchEventInfo.queue = Ref<DispatchQueue>::retained(queue);
    _dispatchEventInfo.sender = VeltoIUnknown::handleOf(getServiceInterface());
    _inputReportThreadSignal = dispatch_semaphore_create(0);
    try {
        NSThread::detachNewThreadWithBlock(
            "velto-reports", [service = Ref<VeltoTouchHIDService>::retained(this), info = _dispatchEventInfo,
                              signal = _inputReportThreadSignal] { service->runInputReportThread(info, *signal); });
    } catch (const std::system_error& error) {
        log(OS_LOG_TYPE_ERROR, "no input report thread: {}", error.what());
        return;
    }
    dispatch_semaphore_wait(_inputReportThreadSignal.get());
}

void VeltoTouchHIDService::unscheduleWithDispatchQueue(dispatch_queue_t /*queue*/) {
    log(OS_LOG_TYPE_DEBUG, "unscheduleWithDispatchQueue:");
    if (_inputReportRunLoop) {
        log(OS_LOG_TYPE_DEBUG, "signalling input report thread to exit");
        CFRunLoopPerformBlock(_inputReportRunLoop.get(), inputReportMode(),
                              [] { CFRunLoopStop(CFRunLoopGetCurrent()); });
        CFRunLoopWakeUp(_inputReportRunLoop.get());
        _inputReportRunLoop = nullptr;
        log(OS_LOG_TYPE_DEBUG, "waiting for input report thread to exit");
        dispatch_semaphore_wait(_inputReportThreadSignal.get());
        _inputReportThreadSignal = nullptr;
        log(OS_LOG_TYPE_DEBUG, "input report thread exited");
    }
    _dispatchEventInfo.queue = nullptr;
}

Ref<HIDEvent> VeltoTouchHIDService::copyEventWithTypeMatchingOptions(std::uint32_t /*eventType*/,
                                                                     IOHIDEventRef /*matching*/,
                                                                     IOOptionBits /*options*/) {
    log(OS_LOG_TYPE_DEBUG, "copyEventWithType:matching:options:");
    return nullptr;
}

IOReturn VeltoTouchHIDService::setOutputEvent(IOHIDEventRef /*event*/) {
    log(OS_LOG_TYPE_DEBUG, "setOutputEvent:");
    return kIOReturnUnsupported;
}

} // namespace VeltoTouch
