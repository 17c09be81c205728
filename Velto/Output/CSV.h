#pragma once

#include "Velto/Analysis/Label.h"
#include "Velto/Analysis/Touch.h"
#include "Velto/Analysis/Track.h"

#include <string>
#include <string_view>

// Recordings as comma-separated values: a row a line, fields quoted only where they must be. Columns are named after
// the members of the JSON Lines. A member that is null there is an empty field.

namespace VeltoTouch::Velto {

enum class Exported : std::uint8_t { Images, Touches, Events, Labels };

// Returns the line that names the columns.
[[nodiscard]] std::string csvHeading(Exported what);

// What a recording says.
struct ExportedRecording {
    std::string_view file;
    const Analysis::Track& track;
    const std::vector<Analysis::Touch>& touches;
    const std::vector<Analysis::Label>& labels;
};

// Returns the rows of a recording: an image (its 15 signals, 'A' to 'O'), a touch, an event or a label each.
[[nodiscard]] std::string csvRows(Exported what, const ExportedRecording& recording);

} // namespace VeltoTouch::Velto
