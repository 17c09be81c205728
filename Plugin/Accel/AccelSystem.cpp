#include "Plugin/Accel/AccelSystem.h"

#include <stdexcept>

namespace VeltoTouch {
namespace {

constexpr std::uint32_t kClientType = 1;
constexpr double kMicrosecondsPerSecond = 1'000'000.0;

Ref<Dictionary> accelerometerMatching() {
    std::vector<Dictionary::Entry> entries;
    entries.push_back({.key = "PrimaryUsagePage", .value = Number::withUnsignedInt(kAccelerometerUsagePage)});
    entries.push_back({.key = "PrimaryUsage", .value = Number::withUnsignedInt(kAccelerometerUsage)});
    return makeRef<Dictionary>(std::move(entries));
}

} // namespace

AccelSystem::AccelSystem(CFRunLoopRef runLoopToUse, CFStringRef mode, std::uint32_t frequency,
                         const Callback& callback) {
    if (runLoopToUse == nullptr || mode == nullptr || !callback)
        throw std::invalid_argument("nil argument");
    try {
        start(runLoopToUse, mode, frequency, callback);
    } catch (...) { // no destructor will run
        cleanup();
        releaseObjects();
        throw;
    }
}

AccelSystem::~AccelSystem() {
    cleanup();
    releaseObjects();
}

void AccelSystem::start(CFRunLoopRef runLoopToUse, CFStringRef mode, std::uint32_t frequency,
                        const Callback& callback) {
    const auto client = IOHIDEventSystemClientCreateWithType(nullptr, kClientType, nullptr);
    if (!client)
        throw std::runtime_error("IOHIDEventSystemClientCreateWithType returned nil");
    eventSystemClient = client.get();
    retain(eventSystemClient);

    IOHIDEventSystemClientSetMatching(eventSystemClient, accelerometerMatching().get());
    const auto services = IOHIDEventSystemClientCopyServices(eventSystemClient);
    if (services.empty())
        throw std::runtime_error("IOHIDEventSystemClientCopyServices returned empty array");
    serviceClient = services.front().get();
    retain(serviceClient);

    runLoop = runLoopToUse;
    retain(runLoop);
    runLoopMode = mode;
    retain(runLoopMode);

    const auto interval = Number::withDouble(1.0 / frequency * kMicrosecondsPerSecond);
    IOHIDServiceClientSetProperty(serviceClient, makeRef<String>("ReportInterval").get(), interval.get());

    const auto block = [callback](void*, void*, IOHIDServiceClientRef, HIDEvent* event) {
        if (IOHIDEventGetType(event) == kIOHIDEventTypeAccelerometer)
            callback(event);
    };
    IOHIDEventSystemClientRegisterEventBlock(eventSystemClient, block, nullptr, nullptr);
    IOHIDEventSystemClientScheduleWithRunLoop(eventSystemClient, runLoop, runLoopMode);
}

void AccelSystem::cleanup() {
    if (runLoop == nullptr)
        return;
    IOHIDEventSystemClientUnscheduleWithRunLoop(eventSystemClient, runLoop, runLoopMode);
    IOHIDEventSystemClientUnregisterEventBlock(eventSystemClient, nullptr, nullptr, nullptr);
    runLoop = nullptr;
}

void AccelSystem::releaseObjects() noexcept {
    while (!retainedObjects.empty())
        retainedObjects.pop_back();
}

} // namespace VeltoTouch
