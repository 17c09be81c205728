#include "Velto/Commands/PadText.h"

#include "Plugin/Reports/Regions.h"

#include <array>
#include <string_view>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

std::string figuresRow(std::string_view baseline, std::string_view noise, std::string_view peak) {
    return fmt::format("{:>11}{:>8}{:>8}", baseline, noise, peak);
}

// Baseline, noise, peak.
std::array<std::string, 3> padFigures(const Analysis::PadStatistics& pad, const std::string& none) {
    const auto rest = pad.rest();
    const auto peak = pad.peak();
    return {rest ? fmt::format("{}", rest->baseline) : none, rest ? fmt::format("{}", rest->noise) : none,
            peak ? fmt::format("{}", *peak) : none};
}

} // namespace

std::string padHeading() { return figuresRow("baseline", "noise", "peak"); }

std::string padCells(const Analysis::PadStatistics& pad) {
    const auto [baseline, noise, peak] = padFigures(pad, "-");
    return figuresRow(baseline, noise, peak);
}

std::string padMembers(std::size_t pad, const Analysis::PadStatistics& statistics) {
    const auto [baseline, noise, peak] = padFigures(statistics, "null");
    return fmt::format(R"("pad":"{}","baseline":{},"noise":{},"peak":{})", letterOf(pad), baseline, noise, peak);
}

} // namespace VeltoTouch::Velto
