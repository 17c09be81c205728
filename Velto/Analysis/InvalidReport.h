#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace VeltoTouch::Analysis {

// Returns what is wrong with a report that the pipeline refuses.
[[nodiscard]] std::string faultOf(std::span<const std::uint8_t> report);

} // namespace VeltoTouch::Analysis
