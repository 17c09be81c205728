#pragma once

#include "Platform/Backend/HIDEventService.h"
#include "Platform/Linux/RunLoop.h"
#include "Tests/Support/TestDevice.h"

namespace VeltoTouch::Tests {

// An accelerometer that a test shakes by hand, once registerEventService() has made it known.
class TestAccelerometer final : public HIDEventService {
public:
    // 3 is the usage by which an accelerometer is found.
    explicit TestAccelerometer(std::uint32_t usage = 3)
        : _properties{{"PrimaryUsagePage", Number::withUnsignedInt(0xFF00)},
                      {"PrimaryUsage", Number::withUnsignedInt(usage)}} {}

    std::atomic<bool> failsToStart{false}; // startEvents throws

    // The "ReportInterval" that was last asked for, in microseconds; nothing if none was. Any thread.
    [[nodiscard]] std::optional<double> reportInterval() {
        const auto interval = getProperty("ReportInterval");
        const auto* number = as<Number>(interval);
        return number == nullptr ? std::nullopt : std::optional(number->doubleValue());
    }

    // Sends an event to all who listen now, from any thread, and returns at once.
    void deliver(const Ref<HIDEvent>& event) { post(event, nullptr); }
    void deliver(double x, double y, double z) { deliver(acceleration(x, y, z)); }

    // The same, but returns when all handlers have returned. Not from the thread of a listener's run loop.
    void deliverAndWait(double x, double y, double z) {
        const auto handled = dispatch_semaphore_create(0);
        for (std::size_t waiting = post(acceleration(x, y, z), handled); waiting != 0; --waiting)
            handled->wait();
    }

    [[nodiscard]] Ref<Value> getProperty(const std::string& key) override {
        const MutexLock guard(_lock);
        const auto known = _properties.find(key);
        return known == _properties.end() ? nullptr : known->second;
    }
    bool setProperty(const std::string& key, const Ref<Value>& value) override {
        const MutexLock guard(_lock);
        if (key != "ReportInterval")
            return false;
        _properties[key] = value;
        return true;
    }

    // The source keeps the listener; when the source goes, nothing is sent to it any more.
    [[nodiscard]] RunLoopSource startEvents(RunLoop& loop, std::string_view mode, EventHandler handler) override {
        if (failsToStart)
            throw std::system_error(ENODEV, std::generic_category(), "test accelerometer");
        const auto listener = std::make_shared<Listener>();
        auto source = listener->open(
            loop, mode, [listener, handler = std::move(handler)](const Ref<HIDEvent>& event) { handler(event); });
        const MutexLock guard(_lock);
        _listeners.push_back(listener);
        return source;
    }

private:
    using Listener = Mailbox<Ref<HIDEvent>>;

    [[nodiscard]] static Ref<HIDEvent> acceleration(double x, double y, double z) {
        return IOHIDEventCreateAccelerometerEvent(nullptr, mach_absolute_time(), x, y, z, 0);
    }

    // The number of those who listen.
    std::size_t post(const Ref<HIDEvent>& event, const Ref<DispatchSemaphore>& handled) {
        const MutexLock guard(_lock);
        std::erase_if(_listeners, [](const auto& listener) { return listener.expired(); });
        std::size_t count = 0;
        for (const auto& weak : _listeners) {
            if (const auto listener = weak.lock(); listener && listener->post(event, handled))
                ++count;
        }
        return count;
    }

    Mutex _lock;
    std::map<std::string, Ref<Value>> _properties VELTO_GUARDED_BY(_lock);
    std::vector<std::weak_ptr<Listener>> _listeners VELTO_GUARDED_BY(_lock);
};

} // namespace VeltoTouch::Tests
