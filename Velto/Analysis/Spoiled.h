#pragma once

#include <string_view>

namespace VeltoTouch::Analysis {

// The gesture of a label that says of a stretch of time that nothing is known of what was meant: an attempt that went
// wrong and was not counted. A score and a comparison leave it and its touches out.
inline constexpr std::string_view kSpoiled = "spoiled";

} // namespace VeltoTouch::Analysis
