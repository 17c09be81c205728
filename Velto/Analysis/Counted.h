#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace VeltoTouch::Analysis {

// Returns "1 recording" or "2 recordings".
[[nodiscard]] inline std::string counted(std::uint64_t count, std::string_view what) {
    return std::to_string(count).append(" ").append(what).append(count == 1 ? "" : "s");
}

} // namespace VeltoTouch::Analysis
