#include "Velto/Host/HostTime.h"

#include "Platform/Clock.h"

namespace VeltoTouch {
namespace {

const mach_timebase_info_data_t& timebase() noexcept {
    static const mach_timebase_info_data_t info = [] {
        mach_timebase_info_data_t fetched{};
        mach_timebase_info(&fetched);
        return fetched;
    }();
    return info;
}

} // namespace

HostTime hostTimeOf(std::uint64_t ticks) noexcept { return HostTime(ticks * timebase().numer / timebase().denom); }

std::uint64_t ticksOf(HostTime time) noexcept { return time.count() * timebase().denom / timebase().numer; }

HostTime hostTimeNow() noexcept { return hostTimeOf(mach_absolute_time()); }

} // namespace VeltoTouch
