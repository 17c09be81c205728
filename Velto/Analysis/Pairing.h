#pragma once
#include "Velto/Analysis/Touch.h"
#include <vector>
namespace VeltoTouch::Analysis {
inline const Touch* touchThatOverlapsMost(const std::vector<Touch>& touches, std::uint64_t startNs, std::uint64_t endNs) {
    const Touch* best = nullptr; std::uint64_t most = 0;
    for (const Touch& t : touches) {
        const auto a = std::max(startNs, t.startNs), b = std::min(endNs, t.endNs);
        if (a > b) continue;
        if (best == nullptr || b - a > most) { best = &t; most = b - a; }
    }
    return best;
}
} // namespace VeltoTouch::Analysis
