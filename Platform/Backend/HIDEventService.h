#pragma once

#include "Platform/HIDEvent.h"
#include "Platform/HIDEventSystem.h"
#include "Platform/Linux/RunLoop.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What stands beneath the HID event system: sources of events and their registry.

namespace VeltoTouch {

// A source of events. Events are delivered on the run loop's thread; properties are used on any thread.
class HIDEventService : public HIDServiceClient {
public:
    using EventHandler = std::function<void(const Ref<HIDEvent>& event)>;

    // Returns the value under a key, or nil. Clients match "PrimaryUsagePage" and "PrimaryUsage".
    [[nodiscard]] virtual Ref<Value> getProperty(const std::string& key) = 0;
    // Returns whether the service has taken the value. "ReportInterval": a double, microseconds between two events.
    virtual bool setProperty(const std::string& key, const Ref<Value>& value) = 0;

    // Adds a source to a mode of the calling thread's run loop that passes events to `handler`. Several sources may
    // exist at a time. On removal the service takes its sources out of their modes. May throw std::system_error.
    [[nodiscard]] virtual RunLoopSource startEvents(RunLoop& loop, std::string_view mode, EventHandler handler) = 0;
};

// Reads the interval in microseconds that a property sets: a number above 0 under "ReportInterval", limited to this
// range. Returns nothing for any other key or value.
constexpr double kShortestReportIntervalUs = 1'000;
constexpr double kLongestReportIntervalUs = 10'000'000;
[[nodiscard]] std::optional<double> reportIntervalUs(const std::string& key, const Ref<Value>& value) noexcept;

// Services are found in the order in which they were registered. Any thread.
void registerEventService(Ref<HIDEventService> service);
void unregisterEventService(const Ref<HIDEventService>& service);
[[nodiscard]] std::vector<Ref<HIDEventService>> registeredEventServices();

} // namespace VeltoTouch
