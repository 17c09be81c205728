#include "Velto/Analysis/Label.h"

#include "Velto/Analysis/Members.h"

#include <optional>

namespace VeltoTouch::Analysis {
namespace {

constexpr const char* kKey = "Label";
constexpr std::uint64_t kNsPerMs = 1'000'000;

std::optional<Label> labelIn(const Frame& frame) {
    const auto* dictionary = as<Dictionary>(frame.value);
    if (frame.type != Frame::Type::Metadata || frame.key != kKey || dictionary == nullptr)
        return std::nullopt;
    const auto gesture = textUnder(*dictionary, "gesture");
    const auto startMs = unsignedUnder(*dictionary, "startMs");
    const auto endMs = unsignedUnder(*dictionary, "endMs");
    if (!gesture || gesture->empty() || !startMs || !endMs)
        return std::nullopt;
    Label label{.gesture = *gesture,
                .region = textUnder(*dictionary, "region").value_or(""),
                .endRegion = textUnder(*dictionary, "endRegion").value_or("")};
    label.endNs = static_cast<std::uint32_t>(*endMs - *startMs) * kNsPerMs; // from its start
    return label;
}

} // namespace

bool isLabel(const Frame& frame) { return labelIn(frame).has_value(); }

std::vector<Label> labelsOf(const std::list<Frame>& frames) {
    std::vector<Label> labels;
    for (const Frame& frame : frames) {
        auto label = labelIn(frame);
        if (!label)
            continue;
        label->index = labels.size() + 1;
        label->startNs = frame.timestampNs - frames.front().timestampNs;
        label->endNs += label->startNs;
        labels.push_back(*std::move(label));
    }
    return labels;
}

} // namespace VeltoTouch::Analysis
