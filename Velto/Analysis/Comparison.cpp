#include "Velto/Analysis/Comparison.h"

#include "Velto/Analysis/Pairing.h"
#include "Velto/Analysis/Score.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace VeltoTouch::Analysis {
namespace {

// A play's touches by the labels that were paired with them.
class Play {
public:
    explicit Play(const LabelledTouches& play) : _play(play) {
        for (std::size_t i = 0; i < play.touches.size(); ++i) {
            if (play.labels[i])
                _byLabel[play.labels[i]->index] = &play.touches[i];
        }
    }

    [[nodiscard]] const std::vector<Touch>& touches() const noexcept { return _play.touches; }
    [[nodiscard]] const Label* labelOf(const Touch& touch) const {
        const auto& label = _play.labels[static_cast<std::size_t>(&touch - _play.touches.data())];
        return label ? &*label : nullptr;
    }
    [[nodiscard]] const Touch* touchOf(const Label& label) const {
        const auto touch = _byLabel.find(label.index);
        return touch == _byLabel.end() ? nullptr : touch->second;
    }
    // Whether a touch would be a stray if nothing was meant by touches without a label.
    [[nodiscard]] bool isStray(const Touch& touch) const { return isGesture(touch) && labelOf(touch) == nullptr; }

private:
    const LabelledTouches& _play;
    std::map<std::size_t, const Touch*> _byLabel;
};

bool isSame(const Touch* a, const Touch* b) {
    return a != nullptr && b != nullptr && a->outcome == b->outcome && a->region == b->region;
}

Change changeOf(bool wasRight, bool isRight, const Touch* a, const Touch* b) {
    if (wasRight != isRight)
        return isRight ? Change::Fixed : Change::Broken;
    return isSame(a, b) ? Change::Same : Change::Other;
}

class Comparison {
public:
    Comparison(const LabelledTouches& a, const LabelledTouches& b)
        : _a(a), _b(b), _isLabelled(a.isLabelled || b.isLabelled) {}

    [[nodiscard]] std::vector<ComparedTouch> result() {
        for (const Touch& touch : _a.touches()) {
            if (const Label* const label = _a.labelOf(touch))
                addLabel(*label);
            else
                addUnlabelled(&touch, touchThatOverlapsMost(_b.touches(), touch.startNs, touch.endNs));
        }
        for (const Touch& touch : _b.touches()) {
            const Label* const label = _b.labelOf(touch);
            if (label == nullptr && !_paired.contains(&touch))
                addUnlabelled(nullptr, &touch);
            else if (label != nullptr && _a.touchOf(*label) == nullptr)
                addLabel(*label);
        }
        const auto start = [](const ComparedTouch& touch) { return (touch.a != nullptr ? touch.a : touch.b)->startNs; };
        std::ranges::stable_sort(_result, {}, start);
        return std::move(_result);
    }

private:
    void addLabel(const Label& label) {
        if (label.isSpoiled())
            return;
        const Touch* const a = _a.touchOf(label);
        const Touch* const b = _b.touchOf(label);
        const Change change = changeOf(isRight(resultOf(label, a)), isRight(resultOf(label, b)), a, b);
        _result.push_back({.change = change, .label = &label, .a = a, .b = b});
    }

    // A stray goes on in one touch alone: the first that is paired with it.
    void addUnlabelled(const Touch* a, const Touch* b) {
        const bool isFirst = _paired.insert(b).second;
        const bool wasRight = !_isLabelled || a == nullptr || !_a.isStray(*a);
        const bool isRight = !_isLabelled || b == nullptr || !isFirst || !_b.isStray(*b);
        _result.push_back({.change = changeOf(wasRight, isRight, a, b), .a = a, .b = b});
    }

    Play _a;
    Play _b;
    const bool _isLabelled;
    std::set<const Touch*> _paired; // of the second play, with touches of the first that have no label
    std::vector<ComparedTouch> _result;
};

} // namespace

LabelledTouches labelled(const std::vector<Label>& labels, std::vector<Touch> touches) {
    LabelledTouches result{.isLabelled = !labels.empty()};
    for (const Label* label : labelsByTouch(labels, touches))
        result.labels.push_back(label == nullptr ? std::nullopt : std::optional(*label));
    result.touches = std::move(touches);
    return result;
}

std::vector<ComparedTouch> compare(const LabelledTouches& a, const LabelledTouches& b) {
    return Comparison(a, b).result();
}

} // namespace VeltoTouch::Analysis
