#include "Plugin/Shared/Util.h"

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

bool stripDomainFromKey(std::string& key, std::string_view domain) noexcept {
    const std::size_t prefixLength = domain.size() + 1;
    if (key.size() < prefixLength || key[domain.size()] != '.' || !key.starts_with(domain))
        return false;
    key.erase(0, prefixLength);
    return true;
}

} // namespace VeltoTouch::Util
