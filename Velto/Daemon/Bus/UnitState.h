#pragma once

#include <optional>
#include <string>

namespace VeltoTouch::Bus {

// A unit of the system's service manager.
struct UnitState {
    std::string load;   // "loaded", "not-found", "masked", ...
    std::string active; // "active", "inactive", "failed", "activating", ...
    std::string result; // of a service that has ended: "success", "exit-code", "start-limit-hit", ...
};

// Returns nothing if the system bus has no service manager, or it does not answer. Any thread; waits for the answer.
[[nodiscard]] std::optional<UnitState> stateOfUnit(const std::string& unit);

} // namespace VeltoTouch::Bus
