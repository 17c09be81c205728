#include "Velto/Analysis/Touch.h"

namespace VeltoTouch::Analysis {
namespace {

template <class Enumeration, std::size_t Count>
std::string_view nameIn(const std::array<std::string_view, Count>& names, Enumeration value) noexcept {
    return names[static_cast<std::size_t>(value)];
}

} // namespace

std::string_view nameOf(Outcome outcome) noexcept {
    static constexpr std::array<std::string_view, 4> kNames{"tap", "hold", "cancel", "unfinished"};
    return nameIn(kNames, outcome);
}

std::string_view nameOf(MovedBy by) noexcept {
    static constexpr std::array<std::string_view, 4> kNames{"peakPad", "lastGestureBias", "padK", "holdMoved"};
    return nameIn(kNames, by);
}

std::string_view nameOf(Touch::EndedBy by) noexcept {
    static constexpr std::array<std::string_view, 2> kNames{"setting", "clock"};
    return nameIn(kNames, by);
}

} // namespace VeltoTouch::Analysis
