#pragma once

#include "Plugin/Algs/Algs.h"
#include "Velto/Analysis/Touch.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

// What pulled a score up or down. A score's contributions are listed in the order of its terms, without the constant:
//
//   tapScore     its three features, times their weights
//   touchScore   by rank of the sorted signals ("rank0" is the strongest), added over the frames since the score began;
//                what the limit of the score cut off is in them too

namespace VeltoTouch::Analysis {

// Follows the touch score of one recognizer, frame by frame.
class ScoreContributions {
public:
    // Takes in the frame that the recognizer has just processed.
    void add(const Algs& algs);
    // Begins again, as the score does at the end of a touch.
    void clear() noexcept { _byRank.fill(0); }

    [[nodiscard]] std::vector<float> byRank() const { return {_byRank.begin(), _byRank.end()}; }

private:
    SVM::ByRank _byRank{};
};

[[nodiscard]] std::vector<float> tapScoreContributions(const HandStats& hand);

struct Pull {
    std::string of;
    float value = 0;
    std::optional<float> typical = {}; // median of this contribution over the accepted touches; none without any
};

// Collects the contributions of accepted touches, to compare others with. Grows with their number. Not for several
// threads at once: `pullsOf` remembers medians.
class Typicals {
public:
    // Takes in a touch if it was accepted: the tap score of a tap, the touch score of a hold.
    void add(const Touch& touch);

    // Returns the largest three contributions of a check by magnitude, the largest first and what is no number last.
    // Empty without contributions.
    [[nodiscard]] std::vector<Pull> pullsOf(const Check& check) const;

private:
    [[nodiscard]] std::optional<float> medianOf(Rule rule, std::size_t contribution) const;

    std::map<Rule, std::vector<std::vector<float>>> _accepted; // the contributions of each accepted touch
    mutable std::map<std::pair<Rule, std::size_t>, std::optional<float>> _medians; // as far as asked for
};

} // namespace VeltoTouch::Analysis
