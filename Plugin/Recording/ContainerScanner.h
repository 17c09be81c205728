#pragma once

#include "Plugin/Recording/Frame.h"

#include <list>
#include <optional>
#include <string_view>

namespace VeltoTouch {

// Reads a container of the current version in the form in which nearly all are written, straight from its text: no
// tree, no copies, several times as fast as a parser. Members may stand in any order, with any white space.
//
// It reads exactly what the parser would read. Returns nothing for whatever is unusual (another version, further
// members, escapes in a report's text) or wrong: then the parser decides. Any thread.
[[nodiscard]] std::optional<std::list<Frame>> scanContainer(std::string_view text);

} // namespace VeltoTouch
