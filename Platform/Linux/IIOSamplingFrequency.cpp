#include "Platform/Linux/IIOSamplingFrequency.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <vector>

#include <fmt/format.h>

namespace VeltoTouch {
namespace {

constexpr std::string_view kBlanks = " \t\n";

struct Frequency {
    double hz;
    std::string_view text;
};

// What is no number above 0 is left out.
std::vector<Frequency> frequenciesIn(std::string_view text) {
    std::vector<Frequency> frequencies;
    for (auto start = text.find_first_not_of(kBlanks); start != std::string_view::npos;
         start = text.find_first_not_of(kBlanks)) {
        text.remove_prefix(start);
        const std::string_view word = text.substr(0, text.find_first_of(kBlanks));
        text.remove_prefix(word.size());
        double hz = 0;
        const auto [behind, error] = std::from_chars(word.data(), word.data() + word.size(), hz);
        if (error == std::errc() && behind == word.data() + word.size() && std::isfinite(hz) && hz > 0.0)
            frequencies.push_back({.hz = hz, .text = word});
    }
    return frequencies;
}

std::string nearestInRange(const std::vector<Frequency>& range, double wantedHz) {
    if (range.size() != 3)
        return {};
    const double least = range[0].hz;
    const double step = range[1].hz;
    const double mostSteps = std::floor((range[2].hz - least) / step);
    const double steps = std::clamp(std::round((wantedHz - least) / step), 0.0, std::max(mostSteps, 0.0));
    return fmt::format("{:.6f}", least + steps * step);
}

} // namespace

std::string nearestSamplingFrequency(std::string_view offered, double wantedHz) {
    const auto bracket = offered.find('[');
    if (bracket != std::string_view::npos) {
        offered.remove_prefix(bracket + 1);
        return nearestInRange(frequenciesIn(offered.substr(0, offered.find(']'))), wantedHz);
    }
    const std::vector<Frequency> frequencies = frequenciesIn(offered);
    const auto isNearer = [wantedHz](const Frequency& a, const Frequency& b) {
        const double toA = std::abs(a.hz - wantedHz);
        const double toB = std::abs(b.hz - wantedHz);
        return toA < toB || (toA == toB && a.hz > b.hz);
    };
    const auto nearest = std::ranges::min_element(frequencies, isNearer);
    return nearest == frequencies.end() ? "" : std::string(nearest->text);
}

} // namespace VeltoTouch
