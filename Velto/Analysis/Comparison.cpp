#include "Velto/Analysis/Comparison.h"

#include "Velto/Analysis/Pairing.h"
#include "Velto/Analysis/Score.h"

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

    [[nodiscard]] const Label* labelOf(const Touch& touch) const {
        const auto& label = _play.labels[static_cast<std::size_t>(&touch - _play.touches.data())];
        return label ? &*label : nullptr;
    }
    [[nodiscard]] const Touch* touchOf(const Label& label) const {
        const auto touch = _byLabel.find(label.index);
        return touch == _byLabel.end() ? nullptr : touch->second;
    }

private:
    const LabelledTouches& _play;
    std::map<std::size_t, const Touch*> _byLabel;
};

class Comparison {
public:
    Comparison(const LabelledTouches& a, const LabelledTouches& b) : _a(a), _b(b) {}

    // The label to judge: the first play's, or one that has a touch in the second alone.
    [[nodiscard]] const Label* labelOf(const Touch* a, const Touch* b) const {
        const Label* const before = a == nullptr ? nullptr : _a.labelOf(*a);
        if (before != nullptr || b == nullptr)
            return before;
        const Label* const after = _b.labelOf(*b);
        return after != nullptr && _a.touchOf(*after) == nullptr && !_judged.contains(after->index) ? after : nullptr;
    }

    [[nodiscard]] ComparedTouch judge(const Touch* a, const Touch* b) {
        const Label* const label = labelOf(a, b);
        return {.change = changeOf(label, a, b), .label = label, .a = a, .b = b};
    }

private:
    Change changeOf(const Label* label, const Touch* a, const Touch* b) {
        if (label != nullptr) {
            _judged.insert(label->index);
            const bool wasRight = isRight(resultOf(*label, _a.touchOf(*label)));
            if (isRight(resultOf(*label, _b.touchOf(*label))) != wasRight)
                return wasRight ? Change::Broken : Change::Fixed;
        }
        const bool isSame = a != nullptr && b != nullptr && a->outcome == b->outcome && a->region == b->region;
        return isSame ? Change::Same : Change::Other;
    }

    Play _a;
    Play _b;
    std::set<std::size_t> _judged; // indexes of labels
};

} // namespace

LabelledTouches labelled(const std::vector<Label>& labels, std::vector<Touch> touches) {
    LabelledTouches result;
    for (const Label* label : labelsByTouch(labels, touches))
        result.labels.push_back(label == nullptr ? std::nullopt : std::optional(*label));
    result.touches = std::move(touches);
    return result;
}

std::vector<ComparedTouch> compare(const LabelledTouches& a, const LabelledTouches& b) {
    Comparison comparison(a, b);
    std::vector<ComparedTouch> compared;
    std::set<const Touch*> paired;
    for (const Touch& touch : a.touches) {
        const Touch* const same = touchThatOverlapsMost(b.touches, touch.startNs, touch.endNs);
        compared.push_back(comparison.judge(&touch, same));
        paired.insert(same);
    }
    for (const Touch& touch : b.touches) {
        if (!paired.contains(&touch) || comparison.labelOf(nullptr, &touch) != nullptr)
            compared.push_back(comparison.judge(nullptr, &touch));
    }
    return compared;
}

} // namespace VeltoTouch::Analysis
