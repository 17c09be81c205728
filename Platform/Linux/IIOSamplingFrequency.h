#pragma once

#include <string>
#include <string_view>

namespace VeltoTouch {

// Returns the offered sampling frequency that is nearest to `wantedHz`, as the driver writes it: some drivers accept no
// other spelling. Of two equally near ones the higher; empty if none can be read.
//
// A driver offers a list, "12.5 25 50", or a range with its step, "[1 1 400]".
[[nodiscard]] std::string nearestSamplingFrequency(std::string_view offered, double wantedHz);

} // namespace VeltoTouch
