#include "Velto/Page/PlayObject.h"

#include "Plugin/Shared/Keys.h"
#include "Velto/Analysis/Members.h"
#include "Velto/Analysis/Pairing.h"
#include "Velto/Analysis/Replay.h"
#include "Velto/Analysis/Track.h"
#include "Velto/Page/Column.h"
#include "Velto/Page/Images.h"
#include "Velto/Page/JSONText.h"

#include <algorithm>
#include <array>
#include <list>
#include <optional>

#include <fmt/format.h>

namespace VeltoTouch::Page {
namespace {

using namespace Analysis;
using Disturbance = Replay::Disturbance;

std::uint64_t nsOf(HostTime time) { return static_cast<std::uint64_t>(time.count()); }

template <class Named>
std::string nameOrNull(const std::optional<Named>& value) {
    return value ? quoted(nameOf(*value)) : "null";
}

std::string imageMembers(const Play& play, const Track& track, const Range& range) {
    Images images;
    track.play(play.settings, [&](const Track::Step& step, const Algs& algs, const HIDEvents&) {
        images.add(step, algs, range.holds(step.ns, step.ns));
    });
    return images.members(play.hasGroups);
}

std::string settingsArray(const std::vector<Setting>& settings) {
    return arrayOf(settings, [](const Setting& setting) {
        return fmt::format("[{},{}]", quoted(setting.key), quoted(JSON::text(setting.value.get())));
    });
}

std::string touchesArray(const Play& play, const Range& range) {
    const std::vector<const Label*> labels = labelsByTouch(play.labels, play.touches);
    return arrayOf(play.touches, [&](const Touch& touch) -> std::string {
        if (!range.holds(touch.startNs, touch.endNs))
            return {};
        const TouchTexts& texts = play.texts[touch.number - 1];
        const Label* const label = labels[touch.number - 1];
        return fmt::format(
            R"({{"number":{},"startNs":{},"endNs":{},"outcome":"{}","region":"{}","reason":{},"label":{},)"
            R"("heading":{},"details":{}}})",
            touch.number, touch.startNs, touch.endNs, nameOf(touch.outcome), nameOf(touch.region),
            nameOrNull(touch.reason()), label == nullptr ? 0 : label->index, quoted(texts.heading),
            quoted(texts.details));
    });
}

std::string labelsArray(const Play& play, const Range& range) {
    return arrayOf(play.labels, [&](const Label& label) {
        return range.holds(label.startNs, label.endNs)
                   ? fmt::format(R"({{"index":{},"startNs":{},"endNs":{},"gesture":{},"region":{},"endRegion":{}}})",
                                 label.index, label.startNs, label.endNs, quoted(label.gesture), quoted(label.region),
                                 quoted(label.endRegion))
                   : std::string();
    });
}

// The settings that the recording writes; those whose key is set for the whole play do nothing.
std::string writesArray(const Play& play, const Range& range) {
    const std::list<Frame>& frames = play.recording.frames();
    return arrayOf(frames, [&](const Frame& frame) -> std::string {
        const std::uint64_t ns = frame.timestampNs - frames.front().timestampNs;
        if (frame.type != Frame::Type::State || !range.holds(ns, ns))
            return {};
        const bool isLeftOut = std::ranges::any_of(
            play.settings, [&frame](const Setting& setting) { return Keys::belowPipeline(setting.key) == frame.key; });
        return fmt::format(R"({{"ns":{},"key":{},"value":{},"isLeftOut":{}}})", ns, quoted(frame.key),
                           quoted(JSON::text(frame.value.get())), isLeftOut);
    });
}

// What the host hears of a play, and what interrupted it.
struct Heard {
    std::vector<Gesture> gestures;
    std::vector<Disturbance> disturbances;
};

Heard listenTo(const Play& play) {
    Heard heard;
    Replay replay;
    replay.gestureHandler = [&heard](const Gesture& gesture) { heard.gestures.push_back(gesture); };
    replay.disturbanceHandler = [&heard](const Disturbance& disturbance) { heard.disturbances.push_back(disturbance); };
    replay.play(play.recording, play.settings, Replay::kMaxSpeed);
    return heard;
}

std::string gesturesArray(const std::vector<Gesture>& gestures, const Range& range) {
    return arrayOf(gestures, [&range](const Gesture& gesture) -> std::string {
        const std::uint64_t ns = nsOf(gesture.time);
        if (!range.holds(ns, ns))
            return {};
        return fmt::format(R"({{"ns":{},"kind":"{}","region":{}}})", ns, nameOf(gesture.kind),
                           nameOrNull(gesture.region));
    });
}

std::string disturbanceText(const Disturbance& disturbance) {
    switch (disturbance.kind) {
    case Disturbance::Kind::InvalidReport:
        return fmt::format("invalid report of {} bytes", disturbance.report.size()) +
               (disturbance.report.empty() ? "" : fmt::format(", ID 0x{:02x}", disturbance.report.front()));
    case Disturbance::Kind::Gap:
        return fmt::format("gap: image {} comes after image {}", disturbance.frame, disturbance.lastFrame.value_or(0));
    case Disturbance::Kind::Reset:
        return "firmware reset";
    }
    return {};
}

std::string disturbancesArray(const std::vector<Disturbance>& disturbances, const Range& range) {
    return arrayOf(disturbances, [&range](const Disturbance& disturbance) -> std::string {
        static constexpr std::string_view kKinds[] = {"invalid", "gap", "reset"};
        const std::uint64_t ns = nsOf(disturbance.time);
        if (!range.holds(ns, ns))
            return {};
        return fmt::format(R"({{"ns":{},"kind":"{}","text":"{}"}})", ns,
                           kKinds[static_cast<std::size_t>(disturbance.kind)], disturbanceText(disturbance));
    });
}

// The samples of the accelerometer, an object of columns.
std::string accelObject(const Play& play, const Range& range) {
    std::vector<std::uint64_t> ns;
    std::array<std::vector<float>, 3> axes;
    for (const Frame& frame : play.recording.frames()) {
        const auto* sample = as<Dictionary>(frame.value);
        const std::uint64_t at = frame.timestampNs - play.recording.frames().front().timestampNs;
        if (frame.type != Frame::Type::Metadata || frame.key != "Accel" || sample == nullptr || !range.holds(at, at))
            continue;
        const auto x = doubleUnder(*sample, "X");
        const auto y = doubleUnder(*sample, "Y");
        const auto z = doubleUnder(*sample, "Z");
        if (!x || !y || !z)
            continue;
        ns.push_back(at);
        axes[0].push_back(static_cast<float>(*x));
        axes[1].push_back(static_cast<float>(*y));
        axes[2].push_back(static_cast<float>(*z));
    }
    return fmt::format(R"({{"rows":{},"ns":"{}","axes":{}}})", ns.size(), timesColumn(ns),
                       arrayOf(axes, [](const auto& axis) { return '"' + floatsColumn(axis) + '"'; }));
}

} // namespace

std::string playObject(const Play& play, const Range& range) {
    const Track track(play.recording.frames());
    const Heard heard = listenTo(play);
    return fmt::format(R"({{"file":{},"durationNs":{},"settings":{},"images":{{{}}},"touches":{},"gestures":{},)"
                       R"("labels":{},"writes":{},"disturbances":{},"accel":{}}})",
                       quoted(play.file), track.durationNs(), settingsArray(play.settings),
                       imageMembers(play, track, range), touchesArray(play, range),
                       gesturesArray(heard.gestures, range), labelsArray(play, range), writesArray(play, range),
                       disturbancesArray(heard.disturbances, range), accelObject(play, range));
}

} // namespace VeltoTouch::Page
