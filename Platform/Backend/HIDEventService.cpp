#include "Platform/Backend/HIDEventService.h"

#include <algorithm>
#include <cmath>

namespace VeltoTouch {
namespace {

struct ServiceRegistry {
    Mutex lock;
    std::vector<Ref<HIDEventService>> services VELTO_GUARDED_BY(lock);
};

ServiceRegistry& serviceRegistry() {
    static auto* const theRegistry = new ServiceRegistry; // never destroyed: threads may use it until the process ends
    return *theRegistry;
}

} // namespace

std::optional<double> reportIntervalUs(const std::string& key, const Ref<Value>& value) noexcept {
    const auto* number = as<Number>(value);
    const double interval = key != "ReportInterval" || number == nullptr ? 0.0 : number->doubleValue();
    if (!std::isfinite(interval) || interval <= 0.0)
        return std::nullopt;
    return std::clamp(interval, kShortestReportIntervalUs, kLongestReportIntervalUs);
}

void registerEventService(Ref<HIDEventService> service) {
    const MutexLock guard(serviceRegistry().lock);
    serviceRegistry().services.push_back(std::move(service));
}

void unregisterEventService(const Ref<HIDEventService>& service) {
    const MutexLock guard(serviceRegistry().lock);
    std::erase(serviceRegistry().services, service);
}

std::vector<Ref<HIDEventService>> registeredEventServices() {
    const MutexLock guard(serviceRegistry().lock);
    return serviceRegistry().services;
}

} // namespace VeltoTouch
