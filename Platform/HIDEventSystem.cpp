#include "Platform/HIDEventSystem.h"

#include <algorithm>
#include <atomic>
#include <cmath>

namespace VeltoTouch {
namespace {

struct Registry {
    Mutex lock;
    std::vector<Ref<HIDEventService>> services VELTO_GUARDED_BY(lock);
    std::atomic<bool> allowsClients{true};
};

Registry& registry() {
    static auto* const theRegistry = new Registry; // never destroyed: threads may use it until the process ends
    return *theRegistry;
}

// What every HIDEventSystemClient is.
class Client final : public HIDEventSystemClient {
public:
    Ref<const Dictionary> matching;
    IOHIDEventBlock block;
    void* target = nullptr;
    void* refcon = nullptr;
    std::vector<RunLoopSource> sources;

    [[nodiscard]] bool matches(HIDEventService& service) const {
        return std::ranges::all_of(matching->entries(), [&service](const Dictionary::Entry& entry) {
            return CFEqual(service.getProperty(entry.key).get(), entry.value.get());
        });
    }
};

Client& clientOf(IOHIDEventSystemClientRef client) noexcept { return static_cast<Client&>(*client); }

} // namespace

std::optional<double> reportIntervalUs(const std::string& key, const Ref<Value>& value) noexcept {
    const auto* number = as<Number>(value);
    const double interval = key != "ReportInterval" || number == nullptr ? 0.0 : number->doubleValue();
    if (!std::isfinite(interval) || interval <= 0.0)
        return std::nullopt;
    return std::clamp(interval, kShortestReportIntervalUs, kLongestReportIntervalUs);
}

void registerEventService(Ref<HIDEventService> service) {
    const MutexLock guard(registry().lock);
    registry().services.push_back(std::move(service));
}

void unregisterEventService(const Ref<HIDEventService>& service) {
    const MutexLock guard(registry().lock);
    std::erase(registry().services, service);
}

void allowEventSystemClients(bool allowed) { registry().allowsClients = allowed; }

Ref<HIDEventSystemClient> IOHIDEventSystemClientCreateWithType(CFTypeRef /*allocator*/, std::uint32_t /*type*/,
                                                               CFDictionaryRef /*properties*/) {
    if (!registry().allowsClients)
        return nullptr;
    auto client = makeRef<Client>();
    client->matching = makeRef<Dictionary>(std::vector<Dictionary::Entry>());
    return client;
}

void IOHIDEventSystemClientSetMatching(IOHIDEventSystemClientRef client, CFDictionaryRef matching) {
    clientOf(client).matching = Ref<const Dictionary>::retained(matching);
}

std::vector<Ref<HIDEventService>> IOHIDEventSystemClientCopyServices(IOHIDEventSystemClientRef client) {
    std::vector<Ref<HIDEventService>> services;
    {
        const MutexLock guard(registry().lock);
        services = registry().services;
    }
    std::erase_if(services,
                  [client](const Ref<HIDEventService>& service) { return !clientOf(client).matches(*service); });
    return services;
}

void IOHIDEventSystemClientRegisterEventBlock(IOHIDEventSystemClientRef client, IOHIDEventBlock block, void* target,
                                              void* refcon) {
    Client& listener = clientOf(client);
    listener.block = std::move(block);
    listener.target = target;
    listener.refcon = refcon;
}

void IOHIDEventSystemClientUnregisterEventBlock(IOHIDEventSystemClientRef client, const IOHIDEventBlock& /*block*/,
                                                void* /*target*/, void* /*refcon*/) {
    clientOf(client).block = nullptr;
}

void IOHIDEventSystemClientScheduleWithRunLoop(IOHIDEventSystemClientRef client, CFRunLoopRef loop, CFStringRef mode) {
    Client& listener = clientOf(client);
    for (const Ref<HIDEventService>& service : IOHIDEventSystemClientCopyServices(client)) {
        const auto handler = [&listener, sender = service](const Ref<HIDEvent>& event) {
            if (const IOHIDEventBlock block = listener.block) // it may unregister itself
                block(listener.target, listener.refcon, sender.get(), event.get());
        };
        listener.sources.push_back(service->startEvents(*loop, mode->text(), handler));
    }
}

void IOHIDEventSystemClientUnscheduleWithRunLoop(IOHIDEventSystemClientRef client, CFRunLoopRef /*loop*/,
                                                 CFStringRef /*mode*/) {
    clientOf(client).sources.clear();
}

bool IOHIDServiceClientSetProperty(IOHIDServiceClientRef service, CFStringRef key, CFPropertyListRef value) {
    return service->setProperty(key->text(), Ref<Value>::retained(value));
}

} // namespace VeltoTouch
