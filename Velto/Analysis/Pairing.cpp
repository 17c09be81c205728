#include "Velto/Analysis/Pairing.h"

#include <algorithm>
#include <optional>
#include <tuple>

namespace VeltoTouch::Analysis {
namespace {

constexpr std::uint64_t kBeforeNs = 50'000'000;
constexpr std::uint64_t kAfterNs = 150'000'000;

// 0 where the spans touch at a point; nothing where they are apart.
std::optional<std::uint64_t> overlapOf(const Touch& touch, std::uint64_t startNs, std::uint64_t endNs) noexcept {
    const std::uint64_t from = std::max(touch.startNs, startNs);
    const std::uint64_t to = std::min(touch.endNs, endNs);
    return from <= to ? std::optional(to - from) : std::nullopt;
}

struct Candidate {
    std::uint64_t overlap;
    std::size_t label;
    std::size_t touch;
};

std::vector<Candidate> candidatesOf(const std::vector<Label>& labels, const std::vector<Touch>& touches) {
    std::vector<Candidate> candidates;
    std::size_t first = 0; // touches before it end before the window, and before all later ones
    for (std::size_t label = 0; label < labels.size(); ++label) {
        const std::uint64_t startNs = labels[label].startNs - std::min(labels[label].startNs, kBeforeNs);
        const std::uint64_t endNs = labels[label].endNs + std::min(kAfterNs, ~labels[label].endNs);
        while (first < touches.size() && touches[first].endNs < startNs)
            ++first;
        for (std::size_t touch = first; touch < touches.size() && touches[touch].startNs <= endNs; ++touch) {
            if (const auto overlap = overlapOf(touches[touch], startNs, endNs))
                candidates.push_back({.overlap = *overlap, .label = label, .touch = touch});
        }
    }
    std::ranges::sort(candidates, [](const Candidate& a, const Candidate& b) {
        return std::tie(b.overlap, a.label, a.touch) < std::tie(a.overlap, b.label, b.touch);
    });
    return candidates;
}

} // namespace

const Touch* touchThatOverlapsMost(const std::vector<Touch>& touches, std::uint64_t startNs, std::uint64_t endNs) {
    const Touch* best = nullptr;
    std::uint64_t most = 0;
    for (const Touch& touch : touches) {
        const auto overlap = overlapOf(touch, startNs, endNs);
        if (overlap && (best == nullptr || *overlap > most)) {
            best = &touch;
            most = *overlap;
        }
    }
    return best;
}

std::vector<const Touch*> pair(const std::vector<Label>& labels, const std::vector<Touch>& touches) {
    std::vector<const Touch*> byLabel(labels.size(), nullptr);
    std::vector<bool> isTaken(touches.size(), false);
    for (const Candidate& candidate : candidatesOf(labels, touches)) {
        if (byLabel[candidate.label] != nullptr || isTaken[candidate.touch])
            continue;
        byLabel[candidate.label] = &touches[candidate.touch];
        isTaken[candidate.touch] = true;
    }
    return byLabel;
}

std::vector<const Label*> labelsByTouch(const std::vector<Label>& labels, const std::vector<Touch>& touches) {
    const std::vector<const Touch*> byLabel = pair(labels, touches);
    std::vector<const Label*> byTouch(touches.size(), nullptr);
    for (std::size_t label = 0; label < labels.size(); ++label) {
        if (byLabel[label] != nullptr)
            byTouch[byLabel[label]->number - 1] = &labels[label];
    }
    return byTouch;
}

} // namespace VeltoTouch::Analysis
