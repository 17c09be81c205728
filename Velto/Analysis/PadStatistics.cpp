#include "Velto/Analysis/PadStatistics.h"

#include "Velto/Analysis/NearestRank.h"

#include <algorithm>
#include <limits>

namespace VeltoTouch::Analysis {
namespace {

constexpr std::int32_t kLowest = std::numeric_limits<std::int16_t>::min();
constexpr std::size_t kSignalCount = std::size_t{1} << 16U;

} // namespace

void PadStatistics::add(std::int16_t signal, bool isAtRest) {
    _peak = std::max(signal, _peak.value_or(signal));
    if (!isAtRest)
        return;
    _atRest.resize(kSignalCount);
    ++_atRest[static_cast<std::size_t>(signal - kLowest)];
    ++_atRestCount;
}

std::optional<PadStatistics::Rest> PadStatistics::rest() const {
    if (_atRestCount == 0)
        return std::nullopt;
    std::size_t baseline = 0;
    for (std::uint64_t count = _atRest[0]; count < nearestRank(_atRestCount, std::uint64_t{50});
         count += _atRest[baseline])
        ++baseline;
    std::size_t noise = 0;
    for (std::uint64_t count = _atRest[baseline]; count < nearestRank(_atRestCount, std::uint64_t{68});) {
        ++noise;
        count += noise <= baseline ? _atRest[baseline - noise] : 0;
        count += baseline + noise < kSignalCount ? _atRest[baseline + noise] : 0;
    }
    return Rest{.baseline = kLowest + static_cast<std::int32_t>(baseline), .noise = static_cast<std::int32_t>(noise)};
}

} // namespace VeltoTouch::Analysis
