#pragma once

#include <string>

// The right to open the node of a surface, which the package gives to a group.

namespace VeltoTouch::Surface {

struct MissingRight {
    std::string text;   // "no right to open /dev/hidraw0 (root:velto 0660)"
    std::string advice; // what this user does about it
};

// Returns what this user lacks, who was refused the node. Throws std::system_error if it is not there.
[[nodiscard]] MissingRight missingRight(const std::string& node);

// Throws both as std::runtime_error.
[[noreturn]] void throwMissingRight(const std::string& node);

// Returns how this user joins the group.
[[nodiscard]] std::string howToJoin();

} // namespace VeltoTouch::Surface
