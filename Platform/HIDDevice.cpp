#include "Platform/HIDDevice.h"

#include "Platform/Backend/HIDDeviceBackend.h"
#include "Platform/Log.h"

#include <algorithm>
#include <system_error>

namespace VeltoTouch {

// What every HIDDevice is.
class OpenableDevice final : public HIDDevice, public InputReportSink {
public:
    explicit OpenableDevice(Ref<HIDDeviceBackend> deviceBackend) : backend(std::move(deviceBackend)) {}

    [[nodiscard]] std::span<std::uint8_t> buffer() noexcept override { return reportBuffer; }
    void deliver(std::size_t length, std::uint64_t timeStamp) override {
        const std::size_t whole = std::min(length, reportBuffer.size());
        if (callback == nullptr)
            return;
        ++backend->_delivered;
        callback(context, kIOReturnSuccess, this, kIOHIDReportTypeInput, whole == 0 ? 0 : reportBuffer.front(),
                 reportBuffer.data(), static_cast<CFIndex>(whole), timeStamp);
    }

    const Ref<HIDDeviceBackend> backend;
    const os_log_t log = os_log_create("org.velto.platform", "HIDDevice");

    // The thread of the run loop alone.
    std::span<std::uint8_t> reportBuffer;
    IOHIDReportWithTimeStampCallback callback = nullptr;
    void* context = nullptr;
    RunLoopSource source;
};

namespace {

OpenableDevice& opened(IOHIDDeviceRef device) noexcept { return static_cast<OpenableDevice&>(*device); }

} // namespace

Ref<HIDDevice> IOHIDDeviceCreate(CFTypeRef /*allocator*/, io_service_t service) {
    Ref<HIDDeviceBackend> backend = registeredDevice(service);
    return backend ? makeRef<OpenableDevice>(std::move(backend)) : nullptr;
}

IOReturn IOHIDDeviceOpen(IOHIDDeviceRef device, IOOptionBits options) {
    return device == nullptr ? kIOReturnNoDevice : opened(device).backend->open(options);
}

IOReturn IOHIDDeviceClose(IOHIDDeviceRef device, IOOptionBits options) {
    if (device == nullptr)
        return kIOReturnNoDevice;
    opened(device).backend->close(options);
    return kIOReturnSuccess;
}

void IOHIDDeviceRegisterInputReportWithTimeStampCallback(IOHIDDeviceRef device, std::uint8_t* report,
                                                         CFIndex reportLength,
                                                         IOHIDReportWithTimeStampCallback callback, void* context) {
    if (device == nullptr)
        return;
    opened(device).reportBuffer = {report, static_cast<std::size_t>(reportLength)};
    opened(device).callback = callback;
    opened(device).context = context;
}

void IOHIDDeviceScheduleWithRunLoop(IOHIDDeviceRef device, CFRunLoopRef loop, CFStringRef mode) {
    if (device == nullptr)
        return;
    opened(device).source = {};
    try {
        opened(device).source = opened(device).backend->startReports(RunLoop::of(loop), mode->text(), opened(device));
    } catch (const std::system_error& error) {
        os_log_with_type(opened(device).log, OS_LOG_TYPE_ERROR, std::string("device cannot be read: ") + error.what());
    }
}

void IOHIDDeviceUnscheduleFromRunLoop(IOHIDDeviceRef device, CFRunLoopRef /*loop*/, CFStringRef /*mode*/) {
    if (device != nullptr)
        opened(device).source = {};
}

IOReturn IOHIDDeviceGetReport(IOHIDDeviceRef device, IOHIDReportType type, std::uint32_t reportID, std::uint8_t* report,
                              CFIndex* reportLength) {
    if (device == nullptr)
        return kIOReturnNoDevice;
    std::size_t length = 0;
    const IOReturn status =
        opened(device).backend->getReport(type, reportID, {report, static_cast<std::size_t>(*reportLength)}, length);
    *reportLength = static_cast<CFIndex>(length);
    return status;
}

Ref<Value> IOHIDDeviceGetProperty(IOHIDDeviceRef device, CFStringRef key) {
    return device == nullptr ? nullptr : opened(device).backend->getProperty(key->text());
}

bool IOHIDDeviceSetProperty(IOHIDDeviceRef device, CFStringRef key, CFPropertyListRef value) {
    return device != nullptr && opened(device).backend->setProperty(key->text(), Ref<Value>::retained(value));
}

} // namespace VeltoTouch
