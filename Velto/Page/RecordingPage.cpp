#include "Velto/Page/RecordingPage.h"

#include "Velto/Analysis/Comparison.h"
#include "Velto/Analysis/PixelNames.h"
#include "Velto/Page/Document.h"
#include "Velto/Page/JSONText.h"
#include "Velto/Page/PlayObject.h"
#include "Velto/Surface/Geometry.h"

#include <array>
#include <string_view>

#include <fmt/format.h>

namespace VeltoTouch::Page {
namespace {

using namespace Analysis;

// Touches of the two plays that belong together, by their numbers. Labels judge plays of one recording alone.
std::string pairsArray(const Play& a, const Play& b) {
    const bool isOneRecording = &a.recording == &b.recording;
    const std::vector<Label> labels = isOneRecording ? a.labels : std::vector<Label>();
    const LabelledTouches before = labelled(labels, a.touches);
    const LabelledTouches after = labelled(labels, b.touches);
    const auto number = [](const Touch* touch) { return touch == nullptr ? 0 : touch->number; };
    return arrayOf(compare(before, after), [&](const ComparedTouch& touch) {
        return fmt::format(R"([{},{},"{}"])", number(touch.a), number(touch.b), nameOf(touch.change));
    });
}

} // namespace

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

std::string pictureMembers(const std::vector<Play>& plays, const Range& range) {
    const auto object = [&range](const Play& play) { return playObject(play, range); };
    return fmt::format(R"("plays":{},"pairs":{})", arrayOf(plays, object),
                       plays.size() > 1 ? pairsArray(plays[0], plays[1]) : "[]");
}

std::string recordingPage(const std::vector<Play>& plays, const Range& range) {
    return document(
        fmt::format(R"({{"kind":"recording","surface":{},{}}})", surfaceObject(), pictureMembers(plays, range)));
}

} // namespace VeltoTouch::Page
