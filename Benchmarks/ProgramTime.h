#pragma once

#include <string>
#include <vector>

namespace VeltoTouch::Benchmarks {

// Seconds that `velto ARGUMENTS` took, its output thrown away: CPU time, user and system, and by the clock. Negative if
// it failed.
struct ProgramTime {
    double cpu = -1;
    double wall = -1;
};
[[nodiscard]] ProgramTime timeOfVelto(std::vector<std::string> arguments);

} // namespace VeltoTouch::Benchmarks
