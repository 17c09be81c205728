#pragma once

#include <string>
#include <string_view>

namespace VeltoTouch {

// Of the sampling frequencies that a driver offers, the nearest to the wanted one (Hz), in the driver's own writing:
// some drivers take no other. Of two that are as near the higher one; empty where it offers none that can be read.
//
// A driver offers a list, "12.5 25 50", or a range with its step, "[1 1 400]".
[[nodiscard]] std::string nearestSamplingFrequency(std::string_view offered, double wantedHz);

} // namespace VeltoTouch
