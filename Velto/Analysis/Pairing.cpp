#include "Velto/Analysis/Pairing.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <tuple>
#include <utility>

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

// Whether a candidate is paired before another: larger overlap first, then by label, then by touch.
bool comesFirst(const Candidate& a, const Candidate& b) noexcept {
    return std::tie(b.overlap, a.label, a.touch) < std::tie(a.overlap, b.label, b.touch);
}

// Pairs as if all candidates were taken in their order, without a list of them: windows of weeks would make it labels
// times touches long. Each label asks for its best touch, a touch goes to the better of two that ask, and the other
// asks for its next one. As labels and touches agree on one order, the pairs are the same.
class Pairs {
public:
    Pairs(const std::vector<Label>& labels, const std::vector<Touch>& touches)
        : _touches(touches), _nextBest(labels.size()), _taken(touches.size()) {
        std::size_t first = 0; // touches before it end before the window, and before all later ones
        for (const Label& label : labels) {
            const std::uint64_t startNs = label.startNs - std::min(label.startNs, kBeforeNs);
            const std::uint64_t endNs = label.endNs + std::min(kAfterNs, ~label.endNs);
            while (first < touches.size() && touches[first].endNs < startNs)
                ++first;
            _windows.push_back({.startNs = label.isSpoiled() ? label.startNs : startNs,
                                .endNs = label.isSpoiled() ? label.endNs : endNs,
                                .firstTouch = first});
        }
        for (std::size_t label = 0; label < labels.size(); ++label) {
            for (std::optional<std::size_t> asking = label; asking;)
                asking = place(*asking);
        }
    }

    // By touch; none if it has no label.
    [[nodiscard]] const std::vector<std::optional<Candidate>>& taken() const noexcept { return _taken; }

private:
    struct Window {
        std::uint64_t startNs;
        std::uint64_t endNs;
        std::size_t firstTouch = 0;
    };

    static constexpr std::size_t kMostKept = 256; // candidates of a label; more are looked for again

    // Gives a label the best touch it can have. Returns the label that has to leave it, none if it was free or there is
    // no touch to have.
    std::optional<std::size_t> place(std::size_t label) {
        std::vector<Candidate>& nextBest = _nextBest[label];
        for (;;) {
            if (nextBest.empty())
                nextBest = bestOf(label);
            if (nextBest.empty())
                return std::nullopt;
            const Candidate candidate = nextBest.back();
            nextBest.pop_back();
            if (isToHave(candidate)) {
                const auto before = std::exchange(_taken[candidate.touch], candidate);
                return before ? std::optional(before->label) : std::nullopt;
            }
        }
    }

    [[nodiscard]] bool isToHave(const Candidate& candidate) const noexcept {
        const auto& taken = _taken[candidate.touch];
        return !taken || comesFirst(candidate, *taken);
    }

    // The best candidates of a label that it can have now, the best one last.
    std::vector<Candidate> bestOf(std::size_t label) const {
        const Window& window = _windows[label];
        std::vector<Candidate> candidates;
        for (std::size_t touch = window.firstTouch; touch < _touches.size() && _touches[touch].startNs <= window.endNs;
             ++touch) {
            const auto overlap = overlapOf(_touches[touch], window.startNs, window.endNs);
            if (!overlap)
                continue;
            const Candidate candidate{.overlap = *overlap, .label = label, .touch = touch};
            if (isToHave(candidate))
                candidates.push_back(candidate);
        }
        const auto kept = candidates.begin() + static_cast<std::ptrdiff_t>(std::min(candidates.size(), kMostKept));
        std::partial_sort(candidates.begin(), kept, candidates.end(), comesFirst);
        return {std::make_reverse_iterator(kept), candidates.rend()};
    }

    const std::vector<Touch>& _touches;
    std::vector<Window> _windows;                  // by label
    std::vector<std::vector<Candidate>> _nextBest; // by label
    std::vector<std::optional<Candidate>> _taken;  // by touch
};

// Gives touches without a label the spoiled one in whose time they are.
void addSpoiled(const std::vector<Label>& labels, const std::vector<Touch>& touches,
                std::vector<const Label*>& byTouch) {
    const Label* spoiled = nullptr; // of those that have begun, the one that ends last
    auto next = labels.begin();
    for (std::size_t touch = 0; touch < touches.size(); ++touch) {
        for (; next != labels.end() && next->startNs <= touches[touch].endNs; ++next) {
            if (next->isSpoiled() && (spoiled == nullptr || next->endNs > spoiled->endNs))
                spoiled = &*next;
        }
        if (byTouch[touch] == nullptr && spoiled != nullptr && touches[touch].startNs <= spoiled->endNs)
            byTouch[touch] = spoiled;
    }
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
    const Pairs pairs(labels, touches);
    for (const auto& pair : pairs.taken()) {
        if (pair)
            byLabel[pair->label] = &touches[pair->touch];
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
    addSpoiled(labels, touches, byTouch);
    return byTouch;
}

} // namespace VeltoTouch::Analysis
