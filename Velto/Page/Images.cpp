#include "Velto/Page/Images.h"

#include "Velto/Page/Column.h"
#include "Velto/Page/JSONText.h"

#include <limits>

#include <fmt/format.h>

namespace VeltoTouch::Page {
namespace {

template <class Bank>
std::int32_t onBits(const Bank& bank) noexcept {
    std::int32_t bits = 0;
    for (std::size_t i = 0; i < bank.on.size(); ++i)
        bits |= bank.on[i] << i;
    return bits;
}

// The columns of pads or groups.
template <class Columns>
std::string columnsOf(const Columns& columns) {
    return arrayOf(columns, [](const auto& column) { return '"' + integersColumn(column) + '"'; });
}

} // namespace

Images::Strongest Images::strongestOf(const Algs& algs) const {
    Strongest strongest{.value = std::numeric_limits<std::int32_t>::min()};
    const auto look = [&](const auto& bank, const auto& before, std::size_t count, std::size_t first) {
        for (std::size_t i = 0; i < count; ++i) {
            if (bank.value[i] <= strongest.value)
                continue;
            const bool wasOn = before.on[i] != 0;
            strongest = {.pixel = first + i,
                         .value = bank.value[i],
                         .wasOn = wasOn,
                         .level = wasOn ? before.onPeak[i] * Pixel::kHysteresis
                                        : Pixel::activationLevel(before.offTrough[i])};
        }
    };
    look(algs.pixels, _padsBefore, kPadCount, 0);
    look(algs.virtualPixels, _groupsBefore, kGroupCount, kPadCount);
    strongest.level *= algs.handStats.activationThreshold;
    return strongest;
}

void Images::add(const Analysis::Track::Step& step, const Algs& algs, bool isShown) {
    constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
    if (isShown) {
        _ns.push_back(step.ns);
        _frame.push_back(step.image.frameNumber);
        _timeMs.push_back(step.image.timestampMs);
        for (std::size_t i = 0; i < kPadCount; ++i)
            _pads[i].push_back(algs.pixels.value[i]);
        for (std::size_t i = 0; i < kGroupCount; ++i)
            _groups[i].push_back(algs.virtualPixels.value[i]);
        _padsOn.push_back(onBits(algs.pixels));
        _groupsOn.push_back(onBits(algs.virtualPixels));
        const Strongest strongest = strongestOf(algs);
        _strongest.push_back(static_cast<std::uint8_t>(strongest.pixel));
        _signal.push_back(strongest.value);
        _onLevel.push_back(strongest.wasOn ? kNone : strongest.level);
        _offLevel.push_back(strongest.wasOn ? strongest.level : kNone);
        _touchScore.push_back(algs.handStats.touchScore);
        _region.push_back(static_cast<std::uint8_t>(algs.handStats.activeRegion));
    }
    _padsBefore = algs.pixels;
    _groupsBefore = algs.virtualPixels;
}

std::string Images::members(bool hasGroups) const {
    return fmt::format(R"("rows":{},"ns":"{}","frame":"{}","timeMs":"{}","pads":{},"groups":{},)"
                       R"("padsOn":"{}","groupsOn":"{}","strongest":"{}","signal":"{}","onLevel":"{}",)"
                       R"("offLevel":"{}","touchScore":"{}","region":"{}")",
                       count(), timesColumn(_ns), countersColumn(_frame), countersColumn(_timeMs), columnsOf(_pads),
                       hasGroups ? columnsOf(_groups) : "[]", integersColumn(_padsOn), integersColumn(_groupsOn),
                       bytesColumn(_strongest), integersColumn(_signal), floatsColumn(_onLevel),
                       floatsColumn(_offLevel), floatsColumn(_touchScore), bytesColumn(_region));
}

} // namespace VeltoTouch::Page
