#include "Velto/Host/HostTime.h"

#include "Platform/Clock.h"

namespace VeltoTouch {

HostTime hostTimeOf(std::uint64_t ticks) noexcept {
    static const mach_timebase_info_data_t timebase = [] {
        mach_timebase_info_data_t fetched{};
        mach_timebase_info(&fetched);
        return fetched;
    }();
    return HostTime(ticks * timebase.numer / timebase.denom);
}

HostTime hostTimeNow() noexcept { return hostTimeOf(mach_absolute_time()); }

} // namespace VeltoTouch
