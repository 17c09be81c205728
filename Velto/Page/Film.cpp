#include "Velto/Page/Film.h"

#include "Velto/Page/JSONText.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include <fmt/format.h>

namespace VeltoTouch::Page {
namespace {

using namespace Analysis;

// Touches of the two plays that belong together, by their numbers. Labels judge plays of one recording alone.
std::vector<Item> pairsOf(const Play& a, const Play& b) {
    const bool isOneRecording = &a.recording == &b.recording;
    const std::vector<Label> labels = isOneRecording ? a.labels : std::vector<Label>();
    const LabelledTouches before = labelled(labels, a.touches);
    const LabelledTouches after = labelled(labels, b.touches);
    const auto number = [](const Touch* touch) { return touch == nullptr ? 0 : touch->number; };
    std::vector<Item> pairs;
    for (const ComparedTouch& touch : compare(before, after)) {
        const Range time = timeOf(touch);
        pairs.push_back({time.fromNs, time.toNs,
                         fmt::format(R"([{},{},"{}"])", number(touch.a), number(touch.b), nameOf(touch.change))});
    }
    return pairs;
}

} // namespace

Range timeOf(const ComparedTouch& touch) {
    Range time{.fromNs = std::numeric_limits<std::uint64_t>::max(), .toNs = 0};
    for (const Touch* const each : {touch.a, touch.b}) {
        if (each != nullptr)
            time = {.fromNs = std::min(time.fromNs, each->startNs), .toNs = std::max(time.toNs, each->endNs)};
    }
    return time;
}

Film::Film(const std::vector<Play>& plays, const std::vector<Range>& ranges) {
    for (const Play& play : plays)
        _plays.emplace_back(play, ranges);
    if (plays.size() > 1)
        _pairs = pairsOf(plays[0], plays[1]);
}

std::size_t Film::imagesIn(const Range& range) const {
    std::size_t most = 0;
    for (const PlayObject& play : _plays)
        most = std::max(most, play.imagesIn(range));
    return most;
}

std::string Film::cut(const Range& range) const {
    const auto object = [&range](const PlayObject& play) { return play.cut(range); };
    return fmt::format(R"("plays":{},"pairs":{})", arrayOf(_plays, object), arrayWithin(range, _pairs));
}

} // namespace VeltoTouch::Page
