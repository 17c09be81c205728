#pragma once

#include "Plugin/Recording/Frame.h"

#include <list>
#include <optional>
#include <string_view>

namespace VeltoTouch {

// Reads a container of the current version in the form in which nearly all are written, straight from its text: no
// tree, no copies, several times as fast as a parser. Members may stand in any order, with any white space.
//
// What it reads is exactly what the parser would read. Whatever is not usual (another version, further members,
// escapes in a report's text) or not right gives nothing, and the parser decides.
[[nodiscard]] std::optional<std::list<Frame>> scanContainer(std::string_view text);

} // namespace VeltoTouch
