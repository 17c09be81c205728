#pragma once

#include "Platform/Backend/HIDEventService.h"
#include "Platform/Linux/RunLoop.h"

#include <atomic>

namespace VeltoTouch::Surface {

// An accelerometer that lies still, but for a little tremor: about 1 g along z. Every client that opens it gets the
// same values in the same order.
class SimulatedAccelerometer : public HIDEventService {
public:
    [[nodiscard]] Ref<Value> getProperty(const std::string& key) override;
    // "ReportInterval" alone, as `reportIntervalUs` reads it; in force from the next event on.
    bool setProperty(const std::string& key, const Ref<Value>& value) override;
    // Events that could not be given in time are left out.
    [[nodiscard]] RunLoopSource startEvents(RunLoop& loop, std::string_view mode, EventHandler handler) override;

private:
    [[nodiscard]] std::uint64_t intervalTicks() const noexcept;

    std::atomic<double> _intervalUs{100'000};
};

// The accelerometer of a surface of which the reports alone are known: it is found, and gives no event.
class SilentAccelerometer final : public SimulatedAccelerometer {
public:
    [[nodiscard]] RunLoopSource startEvents(RunLoop& /*loop*/, std::string_view /*mode*/,
                                            EventHandler /*handler*/) override {
        return {};
    }
};

} // namespace VeltoTouch::Surface
