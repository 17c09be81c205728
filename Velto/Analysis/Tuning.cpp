#include "Velto/Analysis/Tuning.h"

#include "Velto/Analysis/Score.h"
#include "Velto/Analysis/TouchObserver.h"

#include <algorithm>
#include <array>
#include <map>
#include <numeric>

namespace VeltoTouch::Analysis {
namespace {

Faults faultsOf(const RecordingScore& score) {
    Faults faults{.stray = score.strays.size()};
    for (const LabelScore& label : score.labels) {
        switch (label.result) {
        case Result::Missed:
            ++faults.missed;
            break;
        case Result::WrongKind:
        case Result::WrongRegion:
            ++faults.wrong;
            break;
        case Result::False:
            ++faults.isFalse;
            break;
        case Result::Found:
        case Result::Quiet:
            break;
        }
    }
    return faults;
}

// `chosen` in place of what `present` says of the same keys.
std::vector<Setting> merged(const std::vector<Setting>& present, const std::vector<Setting>& chosen) {
    std::vector<Setting> settings = present;
    std::erase_if(settings, [&chosen](const Setting& setting) {
        return std::ranges::find(chosen, setting.key, &Setting::key) != chosen.end();
    });
    settings.insert(settings.end(), chosen.begin(), chosen.end());
    return settings;
}

// What points are weighed by.
using Weights = std::array<std::uint64_t, 3>;
Weights weightsOf(const Faults& faults) { return {faults.missed, faults.wrong, faults.isFalse + faults.stray}; }

// Which points no other beats: one that is nowhere worse and somewhere better. In the order of missed, wrong and false,
// only those before a point can beat it. Of them, few are not beaten in wrong and false: `steps` has their false by
// wrong, falling as wrong rises.
std::vector<bool> frontOf(const std::vector<Faults>& points) {
    std::vector<std::size_t> order(points.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::sort(order, {}, [&points](std::size_t i) { return weightsOf(points[i]); });
    std::vector<bool> isOnFront(points.size());
    std::map<std::uint64_t, std::uint64_t> steps;
    for (std::size_t k = 0; k < order.size(); ++k) {
        const Weights weights = weightsOf(points[order[k]]);
        if (k > 0 && weights == weightsOf(points[order[k - 1]])) { // equals do not beat each other
            isOnFront[order[k]] = isOnFront[order[k - 1]];
            continue;
        }
        const auto [missed, wrong, falseOnes] = weights;
        const auto next = steps.upper_bound(wrong);
        isOnFront[order[k]] = next == steps.begin() || std::prev(next)->second > falseOnes;
        if (!isOnFront[order[k]])
            continue;
        const auto step = steps.insert_or_assign(wrong, falseOnes).first;
        auto beaten = std::next(step);
        while (beaten != steps.end() && beaten->second >= falseOnes)
            beaten = steps.erase(beaten);
    }
    return isOnFront;
}

std::vector<Faults> sumOf(const std::vector<std::vector<Faults>>& recordings, std::size_t folds, std::size_t leftOut) {
    std::vector<Faults> sum(recordings.empty() ? 0 : recordings.front().size());
    for (std::size_t i = 0; i < recordings.size(); ++i) {
        if (folds > 1 && i % folds == leftOut)
            continue;
        for (std::size_t point = 0; point < sum.size(); ++point)
            sum[point] += recordings[i][point];
    }
    return sum;
}

// The place of the lowest cost, the first of equals; the last place, the present settings, wins over equals.
std::size_t bestOf(const std::vector<Faults>& sum) {
    const auto best = std::ranges::min_element(sum, {}, &Faults::cost);
    return best->cost() == sum.back().cost() ? sum.size() - 1 : static_cast<std::size_t>(best - sum.begin());
}

} // namespace

std::vector<std::vector<Setting>> gridOf(const std::vector<Sweep>& sweeps) {
    std::vector<std::vector<Setting>> points{{}};
    for (const Sweep& sweep : sweeps) {
        std::vector<std::vector<Setting>> longer;
        for (const std::vector<Setting>& point : points) {
            for (const Ref<Value>& value : sweep.values) {
                longer.push_back(point);
                longer.back().push_back({.key = sweep.key, .value = value});
            }
        }
        points = std::move(longer);
    }
    return points;
}

Faults& Faults::operator+=(const Faults& other) noexcept {
    missed += other.missed;
    wrong += other.wrong;
    isFalse += other.isFalse;
    stray += other.stray;
    return *this;
}

std::vector<Faults> faultsAt(const std::vector<std::vector<Setting>>& points, const std::vector<Setting>& present,
                             const LabelledTrack& recording) {
    std::vector<Faults> faults;
    for (const std::vector<Setting>& point : points)
        faults.push_back(faultsOf(scoreOf(recording.labels, touchesOf(recording.track, merged(present, point)))));
    return faults;
}

Tuned tuned(const std::vector<std::vector<Faults>>& recordings, std::size_t folds) {
    Tuned result;
    std::vector<Faults> sum = sumOf(recordings, 0, 0);
    if (sum.empty())
        return result;
    if (const std::size_t best = bestOf(sum); best + 1 < sum.size())
        result.best = best;
    if (folds > 1 && recordings.size() > 1) {
        std::uint64_t heldOut = 0;
        for (std::size_t fold = 0; fold < folds; ++fold) {
            const std::size_t chosen = bestOf(sumOf(recordings, folds, fold));
            for (std::size_t i = fold; i < recordings.size(); i += folds)
                heldOut += recordings[i][chosen].cost();
        }
        result.heldOutCost = heldOut;
    }
    result.present = sum.back();
    sum.pop_back();
    result.isOnFront = frontOf(sum);
    result.points = std::move(sum);
    return result;
}

} // namespace VeltoTouch::Analysis
