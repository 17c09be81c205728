#include "Velto/Host/HostedService.h"

#include "Platform/Trace.h"

#include <array>
#include <cstdio>
#include <stdexcept>

namespace VeltoTouch {
namespace {

constexpr IOOptionBits kNoOptions = 0;
constexpr std::uint32_t kTraceGesture = 0x2B1501C0; // kind, region (0 for none), frame, time in nanoseconds

[[noreturn]] void failWithStatus(const char* what, IOReturn status) {
    std::array<char, 96> message{};
    std::snprintf(message.data(), message.size(), "%s: 0x%08X", what, static_cast<unsigned>(status));
    throw std::runtime_error(message.data());
}

void trace(const Gesture& gesture) noexcept {
    kdebug_trace(kTraceGesture, static_cast<std::uint64_t>(gesture.kind),
                 static_cast<std::uint64_t>(gesture.region.value_or(PixelRegion::None)), gesture.frame,
                 gesture.time.count());
}

} // namespace

HostedService::HostedService(CFPlugInFactoryFunction factory, io_service_t device, CFDictionaryRef properties,
                             GestureHandler gestureHandler)
    : _gestureHandler(std::move(gestureHandler)) {
    try {
        make(factory);
        start(device, properties);
        open();
    } catch (...) {
        stop();
        throw;
    }
    (*_service)->setEventCallback(_service, deliver, this, nullptr);
}

void HostedService::make(CFPlugInFactoryFunction factory) {
    _plugIn = static_cast<IOCFPlugInInterfaceStruct**>(factory(nullptr, kIOHIDServicePlugInTypeID));
    if (_plugIn == nullptr)
        throw std::runtime_error("the factory makes no HID service");
    void* handle = nullptr;
    const HRESULT status = (*_plugIn)->QueryInterface(_plugIn, kIOHIDServiceInterface2ID->bytes(), &handle);
    if (status != S_OK)
        failWithStatus("the plug-in has no HID service interface", status);
    _service = static_cast<IOHIDServiceInterface2**>(handle);
}

void HostedService::start(io_service_t device, CFDictionaryRef properties) {
    std::int32_t order = 0; // of interest where several plug-ins want the device
    if (const IOReturn status = (*_plugIn)->Probe(_plugIn, properties, device, &order); status != kIOReturnSuccess)
        failWithStatus("the service does not want the device", status);
    if (const IOReturn status = (*_plugIn)->Start(_plugIn, properties, device); status != kIOReturnSuccess)
        failWithStatus("the service cannot be started", status);
    _state = State::Started;
}

void HostedService::open() {
    if (!(*_service)->open(_service, kNoOptions))
        throw std::runtime_error("the device cannot be opened");
    _state = State::Opened;
}

void HostedService::schedule() {
    (*_service)->scheduleWithDispatchQueue(_service, _queue.get());
    _state = State::Scheduled;
}

void HostedService::unschedule() noexcept {
    if (_state != State::Scheduled)
        return;
    (*_service)->unscheduleFromDispatchQueue(_service, _queue.get());
    dispatch_sync(_queue.get(), [] {});
    _state = State::Opened;
}

void HostedService::stop() noexcept {
    unschedule();
    if (_state == State::Opened)
        (*_service)->close(_service, kNoOptions);
    if (_state >= State::Started)
        (*_plugIn)->Stop(_plugIn);
    if (_service != nullptr)
        (*_service)->Release(_service);
    if (_plugIn != nullptr)
        (*_plugIn)->Release(_plugIn);
    _service = nullptr;
    _plugIn = nullptr;
    _state = State::NotStarted;
}

Ref<Value> HostedService::copyProperty(const std::string& key) const {
    const auto name = makeRef<String>(key);
    return Ref<Value>::adopt((*_service)->copyProperty(_service, name.get()));
}

bool HostedService::setProperty(const std::string& key, const Ref<Value>& value) const {
    const auto name = makeRef<String>(key);
    return (*_service)->setProperty(_service, name.get(), value.get());
}

void HostedService::deliver(void* target, void* /*refcon*/, void* /*sender*/, IOHIDEventRef event,
                            IOOptionBits /*options*/) {
    if (const auto gesture = gestureOf(*event)) {
        trace(*gesture);
        static_cast<const HostedService*>(target)->_gestureHandler(*gesture);
    }
}

} // namespace VeltoTouch
