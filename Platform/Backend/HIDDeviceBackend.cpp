#include "Platform/Backend/HIDDeviceBackend.h"

#include <map>

namespace VeltoTouch {
namespace {

struct DeviceRegistry {
    Mutex lock;
    std::map<io_service_t, Ref<HIDDeviceBackend>> devices VELTO_GUARDED_BY(lock);
    io_service_t lastService VELTO_GUARDED_BY(lock) = 0;
};

DeviceRegistry& deviceRegistry() {
    static auto* const theRegistry = new DeviceRegistry; // never destroyed: threads may use it until the process ends
    return *theRegistry;
}

} // namespace

io_service_t registerDevice(Ref<HIDDeviceBackend> backend) {
    const MutexLock guard(deviceRegistry().lock);
    const io_service_t service = ++deviceRegistry().lastService;
    deviceRegistry().devices.emplace(service, std::move(backend));
    return service;
}

void unregisterDevice(io_service_t service) {
    Ref<HIDDeviceBackend> gone; // destroyed without the lock
    const MutexLock guard(deviceRegistry().lock);
    const auto known = deviceRegistry().devices.find(service);
    if (known == deviceRegistry().devices.end())
        return;
    gone = std::move(known->second);
    deviceRegistry().devices.erase(known);
}

Ref<HIDDeviceBackend> registeredDevice(io_service_t service) {
    const MutexLock guard(deviceRegistry().lock);
    const auto known = deviceRegistry().devices.find(service);
    return known == deviceRegistry().devices.end() ? nullptr : known->second;
}

} // namespace VeltoTouch
