#pragma once

#include "Velto/Analysis/PadStatistics.h"

#include <cstddef>
#include <string>

// A pad's figures, as velto stats shows them of a recording and of a device.

namespace VeltoTouch::Velto {

// Three columns: baseline, noise and peak.
[[nodiscard]] std::string padHeading();
[[nodiscard]] std::string padCells(const Analysis::PadStatistics& pad);

// The members of a JSON object.
[[nodiscard]] std::string padMembers(std::size_t pad, const Analysis::PadStatistics& statistics);

} // namespace VeltoTouch::Velto
