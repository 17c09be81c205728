#pragma once

#include "Platform/HIDEvent.h"
#include "Platform/HIDEventSystem.h"
#include "Platform/Linux/RunLoop.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What stands beneath the HID event system: the sources of events, and their registry.

namespace VeltoTouch {

// A source of events. Events come on the run loop's thread; properties are used from any thread.
class HIDEventService : public HIDServiceClient {
public:
    using EventHandler = std::function<void(const Ref<HIDEvent>& event)>;

    // The value under a key, or nil. Clients match "PrimaryUsagePage" and "PrimaryUsage".
    [[nodiscard]] virtual Ref<Value> getProperty(const std::string& key) = 0;
    // Whether the service has taken the value. "ReportInterval": a double, microseconds between two events.
    virtual bool setProperty(const std::string& key, const Ref<Value>& value) = 0;

    // Adds a source to a mode of the calling thread's run loop that gives events to `handler`. Several may be open at
    // once. A service that goes takes its sources out of their modes. May throw std::system_error.
    [[nodiscard]] virtual RunLoopSource startEvents(RunLoop& loop, std::string_view mode, EventHandler handler) = 0;
};

// The interval that a property asks of a service of ours: a number above 0 under "ReportInterval", in microseconds,
// brought into this range. Nothing for any other key or value, which a service does not take.
constexpr double kShortestReportIntervalUs = 1'000;
constexpr double kLongestReportIntervalUs = 10'000'000;
[[nodiscard]] std::optional<double> reportIntervalUs(const std::string& key, const Ref<Value>& value) noexcept;

// Services are found in the order in which they were registered. Any thread.
void registerEventService(Ref<HIDEventService> service);
void unregisterEventService(const Ref<HIDEventService>& service);
[[nodiscard]] std::vector<Ref<HIDEventService>> registeredEventServices();

} // namespace VeltoTouch
