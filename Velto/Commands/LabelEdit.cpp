#include "Velto/Commands/LabelEdit.h"

#include "Plugin/Reports/InputReport.h"
#include "Plugin/Reports/Regions.h"
#include "Velto/Analysis/Label.h"
#include "Velto/Options/Numbers.h"
#include "Velto/Surface/Alternatives.h"
#include "Velto/Surface/SimulatedRecording.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using Surface::Action;

constexpr double kLongestSeconds = 1e9;
constexpr std::uint64_t kNsPerMs = 1'000'000;

[[noreturn]] void refuse(std::string_view label, std::string_view reason) {
    throw std::invalid_argument(fmt::format("label \"{}\": {}", label, reason));
}

double readSeconds(std::string_view label, std::string_view digits) {
    const auto seconds = numberIn<double>(digits);
    if (!seconds || *seconds < 0 || *seconds > kLongestSeconds)
        refuse(label, fmt::format("\"{}\" is no number of seconds from 0 on", digits));
    return *seconds;
}

// The extent of a recording whose frames may be in any order.
struct Extent {
    std::uint64_t firstNs = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t lastNs = 0;

    explicit Extent(const std::list<Frame>& frames) {
        for (const Frame& frame : frames) {
            firstNs = std::min(firstNs, frame.timestampNs);
            lastNs = std::max(lastNs, frame.timestampNs);
        }
    }
    [[nodiscard]] std::uint64_t durationNs() const noexcept { return lastNs < firstNs ? 0 : lastNs - firstNs; }
};

void requireWithin(const Extent& extent, const SaidLabel& label) {
    if (label.startNs + label.lengthMs * kNsPerMs > extent.durationNs())
        throw std::runtime_error(fmt::format("label \"{}\" reaches beyond the recording, which lasts {:.3f} s",
                                             label.text, static_cast<double>(extent.durationNs()) / 1e9));
}

// The device's clock at a time of the recording: it goes on from the newest image until then, or back from the first.
std::uint32_t deviceTimeMs(const std::list<Frame>& frames, std::uint64_t timestampNs) {
    const Frame* nearest = nullptr;
    std::uint32_t nearestMs = 0;
    for (const Frame& frame : frames) {
        const auto image = frame.type == Frame::Type::InputReport
                               ? InputReport::Image::parse(frame.report.data(), frame.report.size())
                               : std::nullopt;
        if (!image)
            continue;
        const bool isBefore = frame.timestampNs <= timestampNs;
        const bool isNearer = nearest == nullptr ||
                              (isBefore ? nearest->timestampNs > timestampNs || nearest->timestampNs < frame.timestampNs
                                        : nearest->timestampNs > frame.timestampNs);
        if (isNearer) {
            nearest = &frame;
            nearestMs = image->timestampMs;
        }
    }
    const std::uint64_t from = nearest == nullptr ? 0 : nearest->timestampNs;
    const auto elapsed = static_cast<std::int64_t>(timestampNs - from) / static_cast<std::int64_t>(kNsPerMs);
    return nearestMs + static_cast<std::uint32_t>(elapsed); // wraps
}

// Of two members of a name the later one holds.
Ref<Value> valueOf(const SaidLabel& said, std::uint32_t startMs, const Ref<Value>& old) {
    Surface::Simulation::Label label = said.label;
    label.startMs = startMs;
    label.endMs = startMs + said.lengthMs;
    std::vector<Dictionary::Entry> entries;
    const auto add = [&entries](const Ref<Value>& value) {
        if (const auto* dictionary = as<Dictionary>(value); dictionary != nullptr)
            entries.insert(entries.end(), dictionary->entries().begin(), dictionary->entries().end());
    };
    add(old);
    std::erase_if(entries, [](const Dictionary::Entry& entry) { return entry.key == "endRegion"; });
    add(Surface::labelValue(label));
    return makeRef<Dictionary>(std::move(entries));
}

using Place = std::list<Frame>::iterator;

// In the order of time, as they are listed.
std::vector<Place> labelsAmong(std::list<Frame>& frames) {
    std::vector<Place> labels;
    for (auto frame = frames.begin(); frame != frames.end(); ++frame) {
        if (Analysis::isLabel(*frame))
            labels.push_back(frame);
    }
    std::ranges::stable_sort(labels, {}, [](Place place) { return place->timestampNs; });
    return labels;
}

void requireGesture(std::string_view text, std::string_view elseTaken) {
    std::vector<std::string_view> names;
    for (const Surface::StepForm& form : Surface::kStepForms) {
        if (Surface::isGesture(form.action))
            names.push_back(form.name);
    }
    if (std::ranges::find(names, text.substr(0, text.find(':'))) != names.end())
        return;
    if (!elseTaken.empty())
        names.push_back(elseTaken);
    throw std::invalid_argument(
        fmt::format("\"{}\": no such gesture ({})", text, Surface::alternatives(std::move(names))));
}

} // namespace

// A step may say a duration, which a gesture has of its own.
Surface::Step parseGesture(std::string_view text, std::string_view elseTaken) {
    requireGesture(text, elseTaken);
    const Surface::Step step = Surface::parseStep(text);
    if (std::ranges::count(text, ':') > (step.action == Action::Palm ? 0 : 1))
        throw std::invalid_argument(fmt::format("{} says a duration, which has no place here", text));
    return step;
}

SaidLabel parseLabel(std::string_view text) {
    const std::size_t at = text.rfind('@');
    const std::size_t plus = text.find('+', at == std::string_view::npos ? 0 : at);
    if (at == std::string_view::npos || plus == std::string_view::npos)
        refuse(text, "GESTURE:REGION@START+LENGTH is wanted, as in tap:volume-up@2.5+0.1");
    const double start = readSeconds(text, text.substr(at + 1, plus - at - 1));
    const double length = std::round(readSeconds(text, text.substr(plus + 1)) * 1e3);
    if (length < 1 || length > std::numeric_limits<std::uint32_t>::max())
        refuse(text, "the length is 0.001 to 4294967.295 seconds");
    const std::string_view gesture = text.substr(0, at);
    Surface::Simulation::Label label{.gesture = Analysis::kSpoiled, .region = nameOf(PixelRegion::None)};
    try {
        if (gesture != Analysis::kSpoiled)
            label = labelOf(parseGesture(gesture, Analysis::kSpoiled), 0, 0);
    } catch (const std::invalid_argument& error) {
        refuse(text, error.what());
    }
    return {.text = std::string(text),
            .label = label,
            .startNs = static_cast<std::uint64_t>(std::llround(start * 1e9)),
            .lengthMs = static_cast<std::uint32_t>(length)};
}

void editLabels(std::list<Frame>& frames, const LabelEdit& edit) {
    const Extent extent(frames);
    std::vector<Place> labels = labelsAmong(frames);
    const auto take = [&](std::size_t number) {
        if (number == 0 || number > labels.size())
            throw std::runtime_error(fmt::format("there is no label {}: the recording has {}", number, labels.size()));
        const auto place = std::exchange(labels[number - 1], frames.end());
        if (place == frames.end())
            throw std::runtime_error(fmt::format("label {} is named twice", number));
        return place;
    };
    const auto put = [&](const SaidLabel& label, const Ref<Value>& old) {
        requireWithin(extent, label);
        const std::uint64_t timestampNs = extent.firstNs + label.startNs;
        Frame frame{.type = Frame::Type::Metadata,
                    .timestampNs = timestampNs,
                    .key = std::string(Surface::kLabelKey),
                    .value = valueOf(label, deviceTimeMs(frames, timestampNs), old),
                    .report = {}};
        const auto isNotBefore = [=](const Frame& other) { return other.timestampNs >= timestampNs; };
        frames.insert(std::ranges::find_if(frames, isNotBefore), std::move(frame));
    };
    for (const auto& [number, label] : edit.changed) {
        const auto place = take(number);
        put(label, place->value);
        frames.erase(place);
    }
    for (const std::size_t number : edit.removed)
        frames.erase(take(number));
    for (const SaidLabel& label : edit.added)
        put(label, nullptr);
}

} // namespace VeltoTouch::Velto
