#include "Velto/Analysis/Label.h"

#include <optional>
#include <string_view>

namespace VeltoTouch::Analysis {
namespace {

constexpr const char* kKey = "Label";
constexpr std::uint64_t kNsPerMs = 1'000'000;

std::string textUnder(const Dictionary& dictionary, std::string_view key) {
    const auto* text = as<String>(dictionary.find(key));
    return text != nullptr ? std::string(text->text()) : std::string();
}

std::optional<std::uint32_t> millisecondsUnder(const Dictionary& dictionary, std::string_view key) {
    const auto* number = as<Number>(dictionary.find(key));
    if (number == nullptr || number->isBool())
        return std::nullopt;
    return static_cast<std::uint32_t>(number->unsignedLongLongValue());
}

std::optional<Label> labelIn(const Frame& frame) {
    const auto* dictionary = as<Dictionary>(frame.value);
    if (frame.type != Frame::Type::Metadata || frame.key != kKey || dictionary == nullptr)
        return std::nullopt;
    Label label{.gesture = textUnder(*dictionary, "gesture"),
                .region = textUnder(*dictionary, "region"),
                .endRegion = textUnder(*dictionary, "endRegion")};
    const auto startMs = millisecondsUnder(*dictionary, "startMs");
    const auto endMs = millisecondsUnder(*dictionary, "endMs");
    if (label.gesture.empty() || !startMs || !endMs)
        return std::nullopt;
    label.endNs = static_cast<std::uint32_t>(*endMs - *startMs) * kNsPerMs; // from its start
    return label;
}

} // namespace

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
