#include "Velto/Options/Jobs.h"

#include "Velto/Options/Numbers.h"

#include <thread>

namespace VeltoTouch::Velto {
namespace {

constexpr std::size_t kMostJobs = 1024;

} // namespace

CLI::Option* addJobs(App& app, std::size_t& target) {
    target = std::max(1U, std::thread::hardware_concurrency());
    return addNumber(app, "--jobs", target, "How many recordings are worked on at the same time (default: one a core)",
                     std::size_t{1}, kMostJobs);
}

} // namespace VeltoTouch::Velto
