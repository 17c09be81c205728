#include "Plugin/Shared/ClockConversion.h"

#include "Platform/Clock.h"

namespace VeltoTouch::Util {
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

std::uint64_t machTimeFromNanoseconds(std::uint64_t nanoseconds) noexcept {
    return scaledTime(nanoseconds, timebase().denom, timebase().numer);
}

std::uint64_t nanosecondsFromMachTime(std::uint64_t ticks) noexcept {
    return scaledTime(ticks, timebase().numer, timebase().denom);
}

} // namespace VeltoTouch::Util
