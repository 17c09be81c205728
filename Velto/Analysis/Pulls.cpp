#include "Velto/Analysis/Pulls.h"

#include "Velto/Analysis/NearestRank.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>

#include <fmt/format.h>

namespace VeltoTouch::Analysis {
namespace {

constexpr std::size_t kMostPulls = 3;

std::string nameOf(Rule rule, std::size_t contribution) {
    static constexpr std::array kTapFeatures{Rule::NonActivePixels, Rule::SignalPerDuration, Rule::TimeDurationRatio};
    return rule == Rule::TapScore ? std::string(rowOf(kTapFeatures[contribution]).name)
                                  : fmt::format("rank{}", contribution);
}

} // namespace

void ScoreContributions::add(const Algs& algs) {
    const HandStats& hand = algs.handStats;
    if (hand.aboveNoise && !hand.wasAboveNoise)
        clear();
    if (hand.svm.getSVMScore() == 0.0F) // nothing to judge
        return;
    const SVM::RankedValues values = SVM::rankedValues(algs.pixels, algs.virtualPixels);
    for (std::size_t k = 0; k < SVM::kRankCount; ++k)
        _byRank[k] += (static_cast<float>(values[k]) - SVM::means[k]) / SVM::stdDevs[k] * SVM::weights[k];
}

std::vector<float> tapScoreContributions(const HandStats& hand) {
    return {HandStats::kNonActivePixelsWeight * static_cast<float>(hand.nonActivePixels),
            HandStats::kSignalPerDurationWeight * hand.signalPerDuration,
            HandStats::kTimeDurationRatioWeight * hand.timeDurationRatio};
}

void Typicals::add(const Touch& touch) {
    _medians.clear();
    for (const Check& check : touch.checks) {
        const bool isDeciding = (touch.outcome == Outcome::Tap && check.rule == Rule::TapScore) ||
                                (touch.outcome == Outcome::Hold && check.rule == Rule::TouchScore);
        if (isDeciding && !check.contributions.empty())
            _accepted[check.rule].push_back(check.contributions);
    }
}

std::vector<Pull> Typicals::pullsOf(const Check& check) const {
    std::vector<std::size_t> order(check.contributions.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, std::greater(), [&check](std::size_t i) {
        const float magnitude = std::fabs(check.contributions[i]);
        return std::isnan(magnitude) ? -1.0F : magnitude; // what is no number has no order: last
    });
    order.resize(std::min(order.size(), kMostPulls));
    std::vector<Pull> pulls;
    for (const std::size_t i : order)
        pulls.push_back(
            {.of = nameOf(check.rule, i), .value = check.contributions[i], .typical = medianOf(check.rule, i)});
    return pulls;
}

std::optional<float> Typicals::medianOf(Rule rule, std::size_t contribution) const {
    const auto [known, isNew] = _medians.try_emplace({rule, contribution});
    const auto accepted = _accepted.find(rule);
    if (!isNew || accepted == _accepted.end())
        return known->second;
    std::vector<float> values;
    for (const std::vector<float>& contributions : accepted->second) {
        if (!std::isnan(contributions[contribution]))
            values.push_back(contributions[contribution]);
    }
    if (values.empty())
        return std::nullopt;
    return known->second = nearestRank(values, 50);
}

} // namespace VeltoTouch::Analysis
