#include "Velto/Surface/SimulatedAccelerometer.h"

#include "Platform/Clock.h"
#include "Plugin/Shared/ClockConversion.h"
#include "Velto/Surface/Random.h"

#include <algorithm>
#include <utility>

namespace VeltoTouch::Surface {
namespace {

constexpr double kTremor = 0.01; // g

Ref<HIDEvent> nextEvent(Random& random, std::uint64_t time) {
    const double x = random.within(-kTremor, kTremor);
    const double y = random.within(-kTremor, kTremor);
    const double z = 1.0 + random.within(-kTremor, kTremor);
    return IOHIDEventCreateAccelerometerEvent(nullptr, time, x, y, z, 0);
}

} // namespace

Ref<Value> SimulatedAccelerometer::getProperty(const std::string& key) {
    if (key == "PrimaryUsagePage")
        return Number::withUnsignedInt(kAccelerometerUsagePage);
    if (key == "PrimaryUsage")
        return Number::withUnsignedInt(kAccelerometerUsage);
    if (key == "ReportInterval")
        return Number::withDouble(_intervalUs);
    return nullptr;
}

bool SimulatedAccelerometer::setProperty(const std::string& key, const Ref<Value>& value) {
    const auto intervalUs = reportIntervalUs(key, value);
    if (intervalUs)
        _intervalUs = *intervalUs;
    return intervalUs.has_value();
}

RunLoopSource SimulatedAccelerometer::startEvents(RunLoop& loop, std::string_view mode, EventHandler handler) {
    const std::uint64_t first = mach_absolute_time() + intervalTicks();
    const auto give = [self = Ref<SimulatedAccelerometer>::retained(this), handler = std::move(handler),
                       random = Random(1), due = first]() mutable -> std::optional<std::uint64_t> {
        const std::uint64_t now = mach_absolute_time();
        handler(nextEvent(random, now));
        return due = std::max(due + self->intervalTicks(), now);
    };
    return loop.addTimer(mode, first, give);
}

std::uint64_t SimulatedAccelerometer::intervalTicks() const noexcept {
    return Util::machTimeFromNanoseconds(static_cast<std::uint64_t>(_intervalUs * 1000.0));
}

} // namespace VeltoTouch::Surface
