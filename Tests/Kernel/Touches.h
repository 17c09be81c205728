#pragma once

#include "Tests/Kernel/VirtualDevice.h"
#include "Velto/Surface/Scripts.h"
#include "Velto/Surface/Simulation.h"

#include <string>
#include <vector>

// Touches on a virtual device.

namespace VeltoTouch::Tests {

// The program opens a device twice, first to ask what it is. From the second time on the kernel keeps so many reports
// for it, however late it is.
inline constexpr int kOpenedForReports = 2;
inline constexpr std::size_t kKernelsRoom = 63;

// At a low rate the kernel has room for more steps.
inline constexpr Surface::Simulation::Options kAtALowRate{.rateHz = 30};

// What the surface reports of steps, as `velto simulate` has them.
inline std::vector<VirtualDevice::Report> reportsOf(const std::vector<std::string>& steps,
                                                    const Surface::Simulation::Options& options = {}) {
    std::vector<Surface::Step> script;
    for (const std::string& step : steps)
        script.push_back(Surface::parseStep(step));
    std::vector<VirtualDevice::Report> reports;
    Surface::Simulation simulation(options, Surface::scriptOf(script));
    while (const auto report = simulation.next())
        reports.emplace_back(report->bytes().begin(), report->bytes().end());
    return reports;
}

} // namespace VeltoTouch::Tests
