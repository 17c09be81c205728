#include "Plugin/Service/VeltoIUnknown.h"

#include "Plugin/Service/VeltoHIDService.h"

#include <cstring>

namespace VeltoTouch::VeltoIUnknown {
namespace {

// A handle points to the address of one of two tables; the first slot of either is the service.
VeltoHIDService& serviceBehind(void* self) noexcept {
    const void* table = nullptr;
    std::memcpy(&table, self, sizeof table);
    void* service = nullptr;
    std::memcpy(&service, table, sizeof service);
    return *static_cast<VeltoHIDService*>(service);
}

} // namespace

HRESULT QueryInterface(void* self, REFIID interfaceID, void** handle) noexcept {
    const auto service = Ref<VeltoHIDService>::retained(&serviceBehind(self));
    const Ref<UUID> wanted = CFUUIDCreateFromUUIDBytes(nullptr, interfaceID);
    if (CFEqual(wanted.get(), kIOCFPlugInInterfaceID))
        *handle = handleOf(service->getPluginInterface());
    else if (CFEqual(wanted.get(), kIOHIDServiceInterface2ID))
        *handle = handleOf(service->getServiceInterface());
    else
        return E_NOINTERFACE;
    CFRetain(service.get()); // the caller's
    return S_OK;
}

ULONG AddRef(void* self) noexcept { return static_cast<ULONG>(CFRetainAndCount(&serviceBehind(self))); }

ULONG Release(void* self) noexcept { return static_cast<ULONG>(CFReleaseAndCount(&serviceBehind(self))); }

IOReturn Probe(void* self, CFDictionaryRef propertyTable, io_service_t service, std::int32_t* order) noexcept {
    return serviceBehind(self).probeWithServicePropertiesOutScore(service, propertyTable, order);
}

IOReturn Start(void* self, CFDictionaryRef propertyTable, io_service_t service) noexcept {
    return serviceBehind(self).startWithServiceProperties(service, propertyTable);
}

IOReturn Stop(void* self) noexcept { return serviceBehind(self).stop(); }

bool open(void* self, IOOptionBits options) noexcept { return serviceBehind(self).openWithOptions(options); }

void close(void* self, IOOptionBits options) noexcept { serviceBehind(self).closeWithOptions(options); }

CFPropertyListRef copyProperty(void* self, CFStringRef key) noexcept {
    return serviceBehind(self).getPropertyForKey(key).leak();
}

bool setProperty(void* self, CFStringRef key, CFPropertyListRef value) noexcept {
    return serviceBehind(self).setPropertyForKey(value, key);
}

void setEventCallback(void* self, IOHIDServiceEventCallback callback, void* target, void* refcon) noexcept {
    serviceBehind(self).setEventCallbackTargetRefcon(callback, target, refcon);
}

void scheduleWithDispatchQueue(void* self, dispatch_queue_t queue) noexcept {
    const auto kept = Ref<DispatchQueue>::retained(queue);
    serviceBehind(self).scheduleWithDispatchQueue(queue);
}

void unscheduleFromDispatchQueue(void* self, dispatch_queue_t queue) noexcept {
    const auto kept = Ref<DispatchQueue>::retained(queue);
    serviceBehind(self).unscheduleWithDispatchQueue(queue);
}

IOHIDEventRef copyEvent(void* self, std::uint32_t eventType, IOHIDEventRef matching, IOOptionBits options) noexcept {
    return serviceBehind(self).copyEventWithTypeMatchingOptions(eventType, matching, options).leak();
}

IOReturn setOutputEvent(void* self, IOHIDEventRef event) noexcept { return serviceBehind(self).setOutputEvent(event); }

} // namespace VeltoTouch::VeltoIUnknown
