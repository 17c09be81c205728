#include "Platform/Backend/HIDDeviceBackend.h"

#include <map>

namespace VeltoTouch {
namespace {

struct Registry {
    Mutex lock;
    std::map<io_service_t, Ref<HIDDeviceBackend>> devices VELTO_GUARDED_BY(lock);
    io_service_t lastService VELTO_GUARDED_BY(lock) = 0;
};

Registry& registry() {
    static auto* const theRegistry = new Registry; // never destroyed: threads may use it until the process ends
    return *theRegistry;
}

} // namespace

io_service_t registerDevice(Ref<HIDDeviceBackend> backend) {
    const MutexLock guard(registry().lock);
    const io_service_t service = ++registry().lastService;
    registry().devices.emplace(service, std::move(backend));
    return service;
}

void unregisterDevice(io_service_t service) {
    Ref<HIDDeviceBackend> gone; // destroyed without the lock
    const MutexLock guard(registry().lock);
    const auto known = registry().devices.find(service);
    if (known == registry().devices.end())
        return;
    gone = std::move(known->second);
    registry().devices.erase(known);
}

Ref<HIDDeviceBackend> registeredDevice(io_service_t service) {
    const MutexLock guard(registry().lock);
    const auto known = registry().devices.find(service);
    return known == registry().devices.end() ? nullptr : known->second;
}

} // namespace VeltoTouch
