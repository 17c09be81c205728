#pragma once

#include <string>

#include <fmt/ranges.h>

namespace VeltoTouch::Surface {

// Returns "tap, hold or slide"; `names` are one at least.
template <class Names>
[[nodiscard]] std::string alternatives(Names names) {
    const auto last = names.back();
    names.pop_back();
    return names.empty() ? fmt::format("{}", last) : fmt::format("{} or {}", fmt::join(names, ", "), last);
}

} // namespace VeltoTouch::Surface
