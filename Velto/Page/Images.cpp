#include "Velto/Page/Images.h"

#include "Velto/Page/Column.h"
#include "Velto/Page/JSONText.h"

#include <algorithm>
#include <limits>
#include <span>

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

// A column's numbers of some rows.
template <class Number>
std::span<const Number> cut(const std::vector<Number>& column, const Images::Rows& rows) {
    return std::span(column).subspan(rows.first, rows.count);
}

// The columns of pads or groups.
template <class Columns>
std::string columnsOf(const Columns& columns, const Images::Rows& rows) {
    return arrayOf(columns, [&rows](const auto& column) { return '"' + integersColumn(cut(column, rows)) + '"'; });
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
        if (step.kind == Analysis::Track::Step::Kind::Reset)
            _resets.push_back(_ns.size());
        _ns.push_back(step.ns);
        _frame.push_back(step.image.frameNumber);
        _timeMs.push_back(step.image.timestampMs);
        for (std::size_t i = 0; i < kPadCount; ++i)
            _pads[i].push_back(algs.pixels.value[i]);
        for (std::size_t i = 0; _hasGroups && i < kGroupCount; ++i)
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

Images::Rows Images::rowsFrom(std::uint64_t fromNs, std::uint64_t toNs) const {
    const auto begin = std::ranges::lower_bound(_ns, fromNs);
    const auto end = std::ranges::upper_bound(begin, _ns.end(), toNs);
    return {.first = static_cast<std::size_t>(begin - _ns.begin()), .count = static_cast<std::size_t>(end - begin)};
}

std::string Images::members(const Rows& rows) const {
    const auto resets = arrayOf(_resets, [&rows](std::size_t row) {
        const bool isWithin = row >= rows.first && row - rows.first < rows.count;
        return isWithin ? fmt::format("{}", row - rows.first) : std::string();
    });
    return fmt::format(
        R"("rows":{},"resets":{},"ns":"{}","frame":"{}","timeMs":"{}","pads":{},"groups":{},)"
        R"("padsOn":"{}","groupsOn":"{}","strongest":"{}","signal":"{}","onLevel":"{}",)"
        R"("offLevel":"{}","touchScore":"{}","region":"{}")",
        rows.count, resets, timesColumn(cut(_ns, rows)), countersColumn(cut(_frame, rows)),
        countersColumn(cut(_timeMs, rows)), columnsOf(_pads, rows), _hasGroups ? columnsOf(_groups, rows) : "[]",
        integersColumn(cut(_padsOn, rows)), integersColumn(cut(_groupsOn, rows)), bytesColumn(cut(_strongest, rows)),
        integersColumn(cut(_signal, rows)), floatsColumn(cut(_onLevel, rows)), floatsColumn(cut(_offLevel, rows)),
        floatsColumn(cut(_touchScore, rows)), bytesColumn(cut(_region, rows)));
}

} // namespace VeltoTouch::Page
