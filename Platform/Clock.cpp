#include "Platform/Clock.h"

#include <cerrno>
#include <ctime>

namespace VeltoTouch {
namespace {

constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr std::uint64_t kMicrosecondsPerSecond = 1'000'000;

} // namespace

std::uint64_t mach_absolute_time() noexcept {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * kNanosecondsPerSecond + static_cast<std::uint64_t>(now.tv_nsec);
}

void mach_timebase_info(mach_timebase_info_data_t* info) noexcept { *info = {1, 1}; }

void usleep(std::uint64_t microseconds) noexcept {
    timespec left{.tv_sec = static_cast<std::time_t>(microseconds / kMicrosecondsPerSecond),
                  .tv_nsec = static_cast<long>(microseconds % kMicrosecondsPerSecond * 1000)};
    while (clock_nanosleep(CLOCK_MONOTONIC, 0, &left, &left) == EINTR) {
    }
}

} // namespace VeltoTouch
