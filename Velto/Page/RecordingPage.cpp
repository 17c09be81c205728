#include "Velto/Page/RecordingPage.h"

#include "Plugin/Algs/Algs.h"
#include "Plugin/Reports/Regions.h"
#include "Velto/Page/Document.h"
#include "Velto/Page/Film.h"
#include "Velto/Page/JSONText.h"
#include "Velto/Surface/Geometry.h"

#include <array>
#include <string_view>

#include <fmt/format.h>

namespace VeltoTouch::Page {

using namespace Analysis;

std::string surfaceObject() {
    const Algs algs;
    const auto plate = [](const Surface::Place& place) {
        return fmt::format("[{},{},{}]", place.pad, place.position.x, place.position.y);
    };
    const auto name = [](std::string_view text) { return quoted(text); };
    std::vector<std::string_view> padRegions;
    for (std::size_t pad = 0; pad < kPadCount; ++pad)
        padRegions.push_back(nameOf(regionOf(pad)));
    std::array<std::string_view, kRegionCount> regions{};
    for (const RegionRow& row : kRegionRows)
        regions[static_cast<std::size_t>(row.region)] = row.name;
    return fmt::format(R"({{"plates":{},"padRegions":{},"regions":{},"groups":{},"noise":{},"scoreLimit":{},)"
                       R"("holdScore":{}}})",
                       arrayOf(Surface::places(), plate), arrayOf(padRegions, name), arrayOf(regions, name),
                       arrayOf(algs.virtualPixels.names, name), kNoiseFloor, algs.handStats.touchScoreLimit,
                       algs.handStats.holdScoreThreshold);
}

std::string recordingPage(const std::vector<Play>& plays, const Range& range) {
    const std::string shown = range == Range() ? "null" : fmt::format("[{},{}]", range.fromNs, range.toNs);
    return document(fmt::format(R"({{"kind":"recording","surface":{},"shown":{},{}}})", surfaceObject(), shown,
                                Film(plays, {range}).cut(range)));
}

} // namespace VeltoTouch::Page
