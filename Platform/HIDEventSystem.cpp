#include "Platform/HIDEventSystem.h"

#include "Platform/Backend/HIDEventService.h"
#include "Platform/Testing/EventSystem.h"

#include <algorithm>
#include <atomic>

namespace VeltoTouch {
namespace {

std::atomic<bool> allowsClients{true};

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

    [[nodiscard]] std::vector<Ref<HIDEventService>> matchingServices() const {
        auto services = registeredEventServices();
        std::erase_if(services, [this](const Ref<HIDEventService>& service) { return !matches(*service); });
        return services;
    }
};

Client& clientOf(IOHIDEventSystemClientRef client) noexcept { return static_cast<Client&>(*client); }

} // namespace

void allowEventSystemClients(bool allowed) { allowsClients = allowed; }

Ref<HIDEventSystemClient> IOHIDEventSystemClientCreateWithType(CFTypeRef /*allocator*/, std::uint32_t /*type*/,
                                                               CFDictionaryRef /*properties*/) {
    if (!allowsClients)
        return nullptr;
    auto client = makeRef<Client>();
    client->matching = makeRef<Dictionary>(std::vector<Dictionary::Entry>());
    return client;
}

void IOHIDEventSystemClientSetMatching(IOHIDEventSystemClientRef client, CFDictionaryRef matching) {
    clientOf(client).matching = Ref<const Dictionary>::retained(matching);
}

std::vector<Ref<HIDServiceClient>> IOHIDEventSystemClientCopyServices(IOHIDEventSystemClientRef client) {
    const auto matching = clientOf(client).matchingServices();
    return {matching.begin(), matching.end()};
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
    for (const Ref<HIDEventService>& service : listener.matchingServices()) {
        const auto handler = [&listener, sender = service](const Ref<HIDEvent>& event) {
            if (const IOHIDEventBlock block = listener.block) // it may unregister itself
                block(listener.target, listener.refcon, sender.get(), event.get());
        };
        listener.sources.push_back(service->startEvents(RunLoop::of(loop), mode->text(), handler));
    }
}

void IOHIDEventSystemClientUnscheduleWithRunLoop(IOHIDEventSystemClientRef client, CFRunLoopRef /*loop*/,
                                                 CFStringRef /*mode*/) {
    clientOf(client).sources.clear();
}

bool IOHIDServiceClientSetProperty(IOHIDServiceClientRef service, CFStringRef key, CFPropertyListRef value) {
    return static_cast<HIDEventService*>(service)->setProperty(key->text(), Ref<Value>::retained(value));
}

} // namespace VeltoTouch
